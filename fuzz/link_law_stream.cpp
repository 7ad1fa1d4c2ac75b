// The link-law byte stream (chunk 1 of a preset, and in tuning messages): decoded, laid into
// a LinkLaws, computed, and written back. The input's first five bytes are the values of
// sources 0 to 4 in halves (0 to 127.5); the rest is the stream.
#include <cstdint>
#include <map>
#include <vector>

#include "preset/CLinkLawEntrySerializer.h"
#include "preset/LinkLaws.h"

using namespace TesselFX;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kSources = 5;
    if (size < kSources) return 0;
    std::map<unsigned int, double> sources;
    for (unsigned int source = 0; source < kSources; ++source) sources[source] = data[source] * 0.5;
    const std::vector<char> stream(data + kSources, data + size);

    CLinkLawEntrySerializer serializer;
    std::vector<LinkLawEntry> entries;
    if (!serializer.Deserialize(stream.data(), static_cast<unsigned int>(stream.size()), entries)) {
        return 0;
    }
    LinkLaws laws;
    laws.SetEntries(entries);
    laws.SetSourceValues(sources);
    laws.GetSourceToMaster();
    laws.GetTargetValues();
    laws.ClearSource(0);
    laws.GetTargetValues();

    CLinkLawEntrySerializer writer;
    if (!writer.Serialize(laws.GetEntries())) return 0;
    // Deserialize replaces the buffer it owns: decode a copy.
    const std::vector<char> written(writer.GetBuffer(), writer.GetBuffer() + writer.GetSize());
    std::vector<LinkLawEntry> again;
    writer.Deserialize(written.data(), static_cast<unsigned int>(written.size()), again);
    return 0;
}
