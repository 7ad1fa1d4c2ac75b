#pragma once

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of one chunk: u32 index, u32 size, then size bytes.
class ChunkMessageData : public MessageData {
  public:
    ChunkMessageData() = default;
    ChunkMessageData(unsigned int index, std::vector<char> data)
        : m_index(index), m_data(std::move(data)) {}

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    unsigned int GetIndex() const { return m_index; }
    const std::vector<char>& GetData() const { return m_data; }

  private:
    unsigned int m_index = 0;
    std::vector<char> m_data;
};

}  // namespace TesselFX
