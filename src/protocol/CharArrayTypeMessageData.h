#pragma once

#include <string>

#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of bytes: u32 size, then size bytes.
class CharArrayTypeMessageData : public MessageData {
  public:
    CharArrayTypeMessageData() = default;
    explicit CharArrayTypeMessageData(std::vector<char> data) : m_data(std::move(data)) {}
    /// The text's bytes, without a terminator.
    explicit CharArrayTypeMessageData(const std::string& text) : m_data(text.begin(), text.end()) {}

    std::vector<char> GetPayload() const override;
    bool SetPayload(const char* data, unsigned int size) override;

    virtual std::vector<char> GetData() const { return m_data; }
    /// The bytes as a string.
    std::string GetText() const { return std::string(m_data.begin(), m_data.end()); }

  private:
    std::vector<char> m_data;
};

}  // namespace TesselFX
