#pragma once

#include <map>

#include "preset/BinaryPrimitives.h"
#include "protocol/MessageData.h"

namespace TesselFX {

/// A message of parameters: u32 count, then count x (u32 id, f64 value) in ascending id.
class ParameterArrayMessageData : public MessageData {
  public:
    ParameterArrayMessageData() = default;
    explicit ParameterArrayMessageData(std::map<unsigned int, double> parameters)
        : m_parameters(std::move(parameters)) {}
    /// Pairs ids[i] with values[i], up to the shorter of the two; a repeated id keeps the
    /// last value.
    ParameterArrayMessageData(const std::vector<unsigned int>& ids,
                              const std::vector<double>& values);

    std::vector<char> GetPayload() const override;
    /// An id that appears twice keeps its last value.
    bool SetPayload(const char* data, unsigned int size) override;

    const std::map<unsigned int, double>& GetParameters() const { return m_parameters; }

    /// The frame of id with the count entries from first, a sequence of (id, value) pairs in
    /// ascending id: the bytes of a message of this class built from them, without the map.
    template <typename Iterator>
    static std::vector<char> MakeFrame(uint32_t id, Iterator first, size_t count) {
        std::vector<char> frame(sizeof(uint32_t) + PayloadSize(count));
        char* cursor = frame.data();
        const char* end = cursor + frame.size();
        WriteU32(cursor, end, id);
        WritePayload(cursor, end, first, count);
        return frame;
    }

  private:
    /// u32 id and f64 value.
    static constexpr uint32_t kEntrySize = 12;

    static size_t PayloadSize(size_t count) { return sizeof(uint32_t) + kEntrySize * count; }
    /// The count, then the entries.
    template <typename Iterator>
    static void WritePayload(char*& cursor, const char* end, Iterator first, size_t count) {
        WriteU32(cursor, end, static_cast<uint32_t>(count));
        for (size_t i = 0; i < count; ++i, ++first) {
            WriteU32(cursor, end, first->first);
            WriteF64(cursor, end, first->second);
        }
    }

    std::map<unsigned int, double> m_parameters;
};

}  // namespace TesselFX
