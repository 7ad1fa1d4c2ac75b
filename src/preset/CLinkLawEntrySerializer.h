#pragma once

#include <vector>

#include "preset/LinkLawEntry.h"

namespace TesselFX {

/// The byte stream of link-law entries (chunk ZBAC_LINKLAWS): little-endian, unaligned,
/// entries one after another. The serializer owns the buffer of its last call.
/// Not thread safe; one owner at a time uses it.
class CLinkLawEntrySerializer {
  public:
    CLinkLawEntrySerializer() = default;
    virtual ~CLinkLawEntrySerializer();
    CLinkLawEntrySerializer(const CLinkLawEntrySerializer&) = delete;
    CLinkLawEntrySerializer& operator=(const CLinkLawEntrySerializer&) = delete;

    /// Writes the entries into the owned buffer. An empty list has no buffer and fails.
    virtual bool Serialize(const std::vector<LinkLawEntry>& entries);
    /// Appends the entries of the stream to entries (which it does not empty). Stops and
    /// fails at a truncated or zero-sized entry; entries decoded before stay. True when
    /// entries is not empty.
    virtual bool Deserialize(const char* data, unsigned int size,
                             std::vector<LinkLawEntry>& entries);
    /// The owned buffer, null when empty.
    virtual const char* GetBuffer() const;
    virtual unsigned int GetSize() const;
    virtual void Clear();

    /// The serialized size of one entry.
    static size_t EntrySize(const LinkLawEntry& entry);

  private:
    std::vector<char> m_buffer;
};

}  // namespace TesselFX
