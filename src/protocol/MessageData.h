#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace TesselFX {

/// One frame of the tuning protocol: a u32 message id followed by a payload whose layout the
/// id fixes. The frame has no length field; its length comes from the transport. Messages are
/// plain values that live for one command; not thread safe.
class MessageData {
  public:
    /// Ids run from 1 to this; ids without a class still count as valid frames.
    static constexpr uint32_t kMaxMessageId = 53;

    virtual ~MessageData() = default;

    /// The id as 4 little-endian bytes, then the payload.
    virtual std::vector<char> GetBuffer() const;
    /// Parses a whole frame: any valid id is accepted (the caller has chosen the class), the
    /// payload goes to SetPayload. A failure is logged; the object may then be partly filled.
    virtual bool SetBuffer(const char* data, unsigned int size);
    virtual uint32_t GetId() const = 0;
    virtual std::vector<char> GetPayload() const = 0;
    virtual bool SetPayload(const char* data, unsigned int size) = 0;

    /// The id of a frame, or -1 (logged) when the frame is shorter than an id or the id is
    /// outside 1 to kMaxMessageId.
    static int GetMessageId(const char* data, unsigned int size);
    static int GetMessageId(const std::string& frame);

  protected:
    // Checks shared by the payload readers; each logs its failure.

    /// size must be expected.
    static bool CheckExactSize(unsigned int expected, unsigned int size);
    /// size must be expected, the size that a count read from the payload gives (computed in
    /// 32 bits, so a wrapped product is what is compared).
    static bool CheckSizeFromCount(uint32_t expected, uint32_t count, unsigned int size);
    /// Reads a u32 count; "read count fail" when it is missing.
    static bool ReadCount(const char*& cursor, const char* end, uint32_t& count);
    /// Reads a u32 length and that many bytes into out; the bytes must end the payload of
    /// payloadSize bytes, of which fixedSize are not the bytes.
    static bool ReadSizedArray(const char*& cursor, const char* end, uint32_t fixedSize,
                               unsigned int payloadSize, std::vector<char>& out);
};

}  // namespace TesselFX
