// Preset files, system and user: the first byte chooses which of the two files the rest is
// (bit 0: user; bit 1: both, split at the little-endian u16 offset in the next two bytes); a
// missing system file is a fixed valid one. Whatever parses is built into a preset set, every mode
// pair is merged, and the user section written back must parse again where the format allows.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "preset/IPresetHandle.h"
#include "preset/IPresetSet.h"
#include "preset/PresetFactory.h"
#include "preset/PresetHandleFactory.h"
#include "preset/PresetSetFactory.h"
#include "preset/PresetUtils.h"
#include "preset/ZpsBufferReader.h"

using namespace TesselFX;

namespace {

// "BPBZ", total 37, one presets section: one preset (om 1, sm 1, base) with parameter 1 = 0.
const std::vector<char> kSystemFile = {
    'B', 'P', 'B', 'Z', 37, 0, 0, 0, 25, 0, 0, 0, 4, 1, 0,     // header, section, count
    20,  0,   1,   1,   0,  0, 0, 0, 1,  0, 0, 0, 0, 0, 0, 0,  // size .. flags, empty strings
    1,   0,   0,   8,   0,  0, 0, 0, 0,  0, 0, 0, 0};          // item: id 1, type 0, size 8, 0.0

std::shared_ptr<ZpsBufferReader> MakeReader() {
    return std::make_shared<ZpsBufferReader>(std::make_shared<PresetFactory>(),
                                             std::make_shared<PresetSetFactory>(),
                                             std::make_shared<PresetHandleFactory>());
}

void Exercise(const std::shared_ptr<IPresetSet>& set) {
    for (const OmSm& omSm : set->GetOmSms()) {
        std::shared_ptr<IPresetHandle> handle = set->RequestPresetHandle(omSm.om, omSm.sm);
        if (!handle) continue;
        handle->SetSubtypeMasks(set->GetSupportedSubtypeMasks(omSm.om, omSm.sm));
        handle->GetAllParameters();
        handle->SetLinkLawValue(0, 0.5);
        handle->GetAllParameters();
        std::vector<char> chunk;
        handle->GetChunk(1, chunk);
    }
    std::vector<char> userFile;
    if (!PresetUtils::GetSerializedUserSectionFromPresetSet(set, userFile)) std::abort();
    // The writer leaves an empty chunk out but keeps it counted, and a preset's size field
    // wraps above 65,535 bytes: such a file is not expected to parse back. Any other must.
    bool readable = true;
    for (const auto& preset : set->GetUserPresets()) {
        if (!preset || preset->IsEmpty()) continue;
        size_t size = 14 + preset->GetName().size() + preset->GetRemarks().size() +
                      13 * preset->GetParameterCount();
        for (const auto& chunk : preset->GetAllChunks()) {
            readable = readable && !chunk.second.empty();
            size += 5 + chunk.second.size();
        }
        readable = readable && size <= 0xFFFF;
    }
    if (!MakeReader()->ParseBuffer(userFile, true) && readable) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const uint8_t mode = data[0];
    const char* rest = reinterpret_cast<const char*>(data + 1);
    const char* end = reinterpret_cast<const char*>(data + size);
    std::vector<char> system = kSystemFile;
    std::vector<char> user;
    if ((mode & 2) && size >= 3) {
        const size_t split = data[1] | static_cast<size_t>(data[2]) << 8;
        rest += 2;
        const char* cut = rest + (split < static_cast<size_t>(end - rest) ? split : end - rest);
        system.assign(rest, cut);
        user.assign(cut, end);
    } else if (mode & 1) {
        user.assign(rest, end);
    } else {
        system.assign(rest, end);
    }

    std::shared_ptr<ZpsBufferReader> reader = MakeReader();
    reader->SetExcludedParameters({2, 2820});
    reader->ParseBuffer(system, false);
    if (!user.empty()) reader->ParseBuffer(user, true);
    if (std::shared_ptr<IPresetSet> set = reader->Read()) Exercise(set);
    return 0;
}
