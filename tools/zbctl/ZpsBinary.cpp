#include "ZpsBinary.h"

#include <algorithm>
#include <cstring>

#include "LogRecorder.h"
#include "ZbctlError.h"
#include "preset/BinaryPrimitives.h"
#include "preset/CLinkLawEntrySerializer.h"
#include "preset/PresetFactory.h"
#include "preset/ZpsBufferReader.h"

namespace TesselFX {
namespace zbctl {

namespace {

// Growing little-endian output on top of the library's bounded writers.
class ByteSink {
  public:
    size_t Size() const { return m_bytes.size(); }
    std::vector<char>& Bytes() { return m_bytes; }

    template <typename T, bool (*Writer)(char*&, const char*, T)>
    void Put(T value) {
        char buffer[sizeof(T)];
        char* cursor = buffer;
        Writer(cursor, buffer + sizeof(T), value);
        m_bytes.insert(m_bytes.end(), buffer, buffer + sizeof(T));
    }
    void U8(uint8_t value) { Put<uint8_t, WriteU8>(value); }
    void U16(uint16_t value) { Put<uint16_t, WriteU16>(value); }
    void U32(uint32_t value) { Put<uint32_t, WriteU32>(value); }
    void F64(double value) { Put<double, WriteF64>(value); }
    void Raw(const char* data, size_t size) { m_bytes.insert(m_bytes.end(), data, data + size); }
    void String(const std::string& text, const std::string& what) {
        if (text.size() > 255) throw ZbctlError(what + " is longer than 255 bytes");
        U8(static_cast<uint8_t>(text.size()));
        Raw(text.data(), text.size());
    }
    // Overwrites a field written earlier at offset.
    template <typename T, bool (*Writer)(char*&, const char*, T)>
    void Patch(size_t offset, T value) {
        char* cursor = m_bytes.data() + offset;
        Writer(cursor, m_bytes.data() + m_bytes.size(), value);
    }

  private:
    std::vector<char> m_bytes;
};

std::string PresetLabel(const ZpsPreset& preset) {
    return "preset \"" + preset.name + "\" (om " + std::to_string(preset.outputMode) + ", sm " +
           std::to_string(preset.soundMode) + ")";
}

uint16_t CheckU16(uint32_t value, const std::string& what) {
    if (value > 0xFFFF)
        throw ZbctlError(what + " " + std::to_string(value) + " does not fit in 16 bits");
    return static_cast<uint16_t>(value);
}

uint8_t CheckU8(uint32_t value, const std::string& what) {
    if (value > 0xFF)
        throw ZbctlError(what + " " + std::to_string(value) + " does not fit in 8 bits");
    return static_cast<uint8_t>(value);
}

// All chunks of a preset as the file holds them: the link laws as chunk 1, then the others.
std::map<unsigned int, std::vector<char>> FileChunks(const ZpsPreset& preset) {
    std::map<unsigned int, std::vector<char>> chunks = preset.chunks;
    if (!preset.linkLaws.empty()) {
        if (chunks.count(ZBAC_LINKLAWS) != 0) {
            throw ZbctlError(PresetLabel(preset) + " has link laws and a raw chunk 1 at once");
        }
        CLinkLawEntrySerializer serializer;
        serializer.Serialize(preset.linkLaws);
        chunks[ZBAC_LINKLAWS].assign(serializer.GetBuffer(),
                                     serializer.GetBuffer() + serializer.GetSize());
    }
    return chunks;
}

void EncodePreset(ByteSink& sink, const ZpsPreset& preset, WarningList& warnings) {
    const std::string label = PresetLabel(preset);
    const auto chunks = FileChunks(preset);
    size_t itemCount = preset.parameters.size();
    for (const auto& chunk : chunks) itemCount += chunk.second.empty() ? 0 : 1;

    const size_t sizeOffset = sink.Size();
    sink.U16(0);
    sink.U8(CheckU8(preset.outputMode, label + ": output mode"));
    sink.U8(CheckU8(preset.soundMode, label + ": sound mode"));
    sink.U32(preset.subtypeMask);
    sink.U16(CheckU16(static_cast<uint32_t>(itemCount), label + ": item count"));
    sink.U8(preset.priority);
    sink.U8(0);
    sink.U16(preset.flags);
    sink.String(preset.name, label + ": name");
    sink.String(preset.remarks, label + ": remarks");
    for (const auto& parameter : preset.parameters) {
        sink.U16(CheckU16(parameter.first, label + ": parameter id"));
        sink.U8(kZpsItemParameter);
        sink.U16(8);
        sink.F64(parameter.second);
    }
    for (const auto& chunk : chunks) {
        if (chunk.second.empty()) continue;
        sink.U16(CheckU16(chunk.first, label + ": chunk index"));
        sink.U8(kZpsItemChunk);
        sink.U16(CheckU16(static_cast<uint32_t>(chunk.second.size()),
                          label + ": size of chunk " + std::to_string(chunk.first)));
        sink.Raw(chunk.second.data(), chunk.second.size());
    }
    const size_t recordSize = sink.Size() - sizeOffset - 2;
    const auto sizeField = static_cast<uint16_t>(recordSize);
    if (sizeField != recordSize) {
        warnings.Add("record size wraps", [&] {
            return label + ": the record is " + std::to_string(recordSize) +
                   " bytes long, more than its 16-bit size field holds; the field says " +
                   std::to_string(sizeField) +
                   " (the size modulo 65536), as the library's own writer writes it, and the "
                   "library's reader does not use it";
        });
    }
    sink.Patch<uint16_t, WriteU16>(sizeOffset, sizeField);
}

// Writes the size and id of a section, runs body, then patches the size: the bytes behind
// the size field, the id byte included.
template <typename Body>
void EncodeSection(ByteSink& sink, uint8_t id, Body body) {
    const size_t sizeOffset = sink.Size();
    sink.U32(0);
    sink.U8(id);
    body();
    sink.Patch<uint32_t, WriteU32>(sizeOffset, static_cast<uint32_t>(sink.Size() - sizeOffset - 4));
}

}  // namespace

std::vector<char> EncodeZps(const ZpsDocument& document, WarningList& warnings) {
    ByteSink sink;
    sink.U32(kZpsMagic);
    sink.U32(0);
    if (document.information) {
        const ZpsInformation& info = *document.information;
        EncodeSection(sink, kZpsSectionInformation, [&] {
            sink.U32(info.value);
            for (uint8_t byte : info.bytes) sink.U8(byte);
            sink.U32(info.word);
            sink.U32(info.reserved[0]);
            sink.U32(info.reserved[1]);
        });
    }
    if (!document.tags.empty()) {
        EncodeSection(sink, kZpsSectionTags, [&] {
            sink.U8(CheckU8(static_cast<uint32_t>(document.tags.size()), "tag count"));
            for (const auto& tag : document.tags) {
                sink.U8(CheckU8(tag.first, "tag id"));
                sink.String(tag.second, "tag " + std::to_string(tag.first));
            }
        });
    }
    if (document.remarks) {
        EncodeSection(sink, kZpsSectionRemarks, [&] { sink.String(*document.remarks, "remarks"); });
    }
    if (document.systemPresets) {
        EncodeSection(sink, kZpsSectionPresets, [&] {
            sink.U16(
                CheckU16(static_cast<uint32_t>(document.systemPresets->size()), "preset count"));
            for (const ZpsPreset& preset : *document.systemPresets)
                EncodePreset(sink, preset, warnings);
        });
    }
    if (document.user) {
        const ZpsUserModes& user = *document.user;
        EncodeSection(sink, kZpsSectionUserModes, [&] {
            sink.U16(0);
            sink.U16(CheckU16(static_cast<uint32_t>(user.enabledMasks.size()),
                              "enabled subtype record count"));
            for (const ZpsEnabledMask& record : user.enabledMasks) {
                sink.U16(CheckU16(record.outputMode, "enabled subtypes: output mode"));
                sink.U16(CheckU16(record.soundMode, "enabled subtypes: sound mode"));
                sink.U32(record.mask);
            }
            sink.U16(CheckU16(static_cast<uint32_t>(user.presets.size()), "user preset count"));
            for (const ZpsPreset& preset : user.presets) EncodePreset(sink, preset, warnings);
        });
    }
    sink.Patch<uint32_t, WriteU32>(4, static_cast<uint32_t>(sink.Size()));
    return std::move(sink.Bytes());
}

namespace {

// Bounded reading with the offset of every failure.
class ByteSource {
  public:
    explicit ByteSource(const std::vector<char>& bytes)
        : m_begin(bytes.data()), m_cursor(bytes.data()), m_end(bytes.data() + bytes.size()) {}

    size_t Offset() const { return static_cast<size_t>(m_cursor - m_begin); }
    size_t Left() const { return m_cursor <= m_end ? static_cast<size_t>(m_end - m_cursor) : 0; }
    const char* Cursor() const { return m_cursor; }
    const char* End() const { return m_end; }
    void MoveTo(const char* cursor) { m_cursor = cursor; }

    [[noreturn]] void Fail(const std::string& what) const {
        throw ZbctlError("offset " + std::to_string(Offset()) + ": " + what);
    }
    uint8_t U8(const char* what) { return Read<uint8_t, ReadU8>(what); }
    uint16_t U16(const char* what) { return Read<uint16_t, ReadU16>(what); }
    uint32_t U32(const char* what) { return Read<uint32_t, ReadU32>(what); }
    double F64(const char* what) { return Read<double, ReadF64>(what); }
    std::string String(const char* what) {
        std::string value;
        if (!ReadString(m_cursor, m_end, value)) Fail(std::string("truncated ") + what);
        return value;
    }
    std::vector<char> Bytes(size_t count, const char* what) {
        std::vector<char> value;
        if (!ReadBytes(m_cursor, m_end, count, value)) Fail(std::string("truncated ") + what);
        return value;
    }

  private:
    template <typename T, bool (*Reader)(const char*&, const char*, T&)>
    T Read(const char* what) {
        T value{};
        if (!Reader(m_cursor, m_end, value)) Fail(std::string("truncated ") + what);
        return value;
    }

    const char* m_begin;
    const char* m_cursor;
    const char* m_end;
};

ZpsPreset DecodePreset(ByteSource& source, WarningList& warnings) {
    ZpsPreset preset;
    source.U16("preset size");
    preset.outputMode = source.U8("preset output mode");
    preset.soundMode = source.U8("preset sound mode");
    preset.subtypeMask = source.U32("preset subtype mask");
    const uint16_t itemCount = source.U16("preset item count");
    preset.priority = source.U8("preset priority");
    source.U8("preset reserved byte");
    preset.flags = source.U16("preset flags");
    preset.name = source.String("preset name");
    preset.remarks = source.String("preset remarks");
    for (uint16_t i = 0; i < itemCount; ++i) {
        const uint16_t id = source.U16("item id");
        const uint8_t type = source.U8("item type");
        const uint16_t size = source.U16("item size");
        if (type == kZpsItemParameter) {
            // A parameter value is 8 bytes whatever the size field says.
            preset.parameters[id] = source.F64("parameter value");
        } else if (type == kZpsItemChunk) {
            std::vector<char> data = source.Bytes(size, "chunk");
            if (id == ZBAC_LINKLAWS && !data.empty()) {
                CLinkLawEntrySerializer serializer;
                std::vector<LinkLawEntry> entries;
                if (!serializer.Deserialize(data.data(), static_cast<unsigned int>(data.size()),
                                            entries)) {
                    warnings.Add("link-law chunk", [&] {
                        return "preset \"" + preset.name +
                               "\": link-law chunk does not decode whole; kept as raw bytes";
                    });
                    preset.chunks[id] = std::move(data);
                    continue;
                }
                preset.linkLaws = std::move(entries);
            } else {
                preset.chunks[id] = std::move(data);
            }
        } else {
            warnings.Add("unknown item type", [&] {
                return "preset \"" + preset.name + "\": item " + std::to_string(id) +
                       " of unknown type " + std::to_string(type) + " skipped";
            });
            if (source.Left() < size) source.Fail("item of unknown type reaches past the end");
            source.MoveTo(source.Cursor() + size);
        }
    }
    return preset;
}

}  // namespace

ZpsDocument DecodeZps(const std::vector<char>& bytes, ZpsDecodeNotes& notes,
                      const std::function<void(ZpsPreset&&, bool user)>& presets) {
    ZpsDocument document;
    const auto keep = [&](ZpsPreset&& preset, bool user) {
        if (presets) {
            presets(std::move(preset), user);
        } else {
            (user ? document.user->presets : *document.systemPresets).push_back(std::move(preset));
        }
    };
    ByteSource source(bytes);
    if (source.Left() < 4 || source.U32("magic") != kZpsMagic) {
        throw ZbctlError("not a preset file: the magic \"BPBZ\" is missing");
    }
    if (source.Left() < 4) {
        notes.incomplete = "the file ends before its total size: the library reads it as empty";
        return document;
    }
    const uint32_t totalSize = source.U32("total size");
    if (bytes.size() < totalSize) {
        throw ZbctlError("size in file " + std::to_string(totalSize) +
                         " is larger than the real size " + std::to_string(bytes.size()));
    }
    WarningList& warnings = notes.warnings;
    if (bytes.size() > totalSize) {
        warnings.Add("bytes behind the declared size", [&] {
            return std::to_string(bytes.size() - totalSize) +
                   " bytes behind the size the file declares";
        });
    }
    bool anySection = false;
    while (source.Left() >= 5) {
        const uint32_t sectionSize = source.U32("section size");
        const uint8_t id = source.U8("section id");
        if (sectionSize > 0 && sectionSize - 1 > source.Left()) {
            notes.incomplete = "section " + std::to_string(id) + " at offset " +
                               std::to_string(source.Offset() - 5) +
                               " reaches past the end: the library stops reading there";
            return document;
        }
        anySection = true;
        switch (id) {
            case kZpsSectionInformation: {
                ZpsInformation info;
                info.value = source.U32("information");
                for (uint8_t& byte : info.bytes) byte = source.U8("information");
                info.word = source.U32("information");
                info.reserved[0] = source.U32("information");
                info.reserved[1] = source.U32("information");
                document.information = info;
                break;
            }
            case kZpsSectionTags: {
                const uint8_t count = source.U8("tag count");
                for (uint8_t i = 0; i < count; ++i) {
                    const uint8_t tagId = source.U8("tag id");
                    document.tags[tagId] = source.String("tag name");
                }
                break;
            }
            case kZpsSectionRemarks:
                document.remarks = source.String("remarks");
                break;
            case kZpsSectionPresets: {
                if (!document.systemPresets) document.systemPresets.emplace();
                const uint16_t count = source.U16("preset count");
                for (uint16_t i = 0; i < count; ++i) {
                    keep(DecodePreset(source, warnings), false);
                }
                break;
            }
            case kZpsSectionUserModes: {
                if (!document.user) document.user.emplace();
                source.U16("user modes reserved word");
                const uint16_t tagCount = source.U16("enabled subtype record count");
                for (uint16_t i = 0; i < tagCount; ++i) {
                    ZpsEnabledMask record;
                    record.outputMode = source.U16("enabled subtypes output mode");
                    record.soundMode = source.U16("enabled subtypes sound mode");
                    record.mask = source.U32("enabled subtypes mask");
                    document.user->enabledMasks.push_back(record);
                }
                const uint16_t presetCount = source.U16("user preset count");
                for (uint16_t i = 0; i < presetCount; ++i) {
                    keep(DecodePreset(source, warnings), true);
                }
                break;
            }
            default:
                // The library skips an unknown section by its size counted from behind the
                // id byte, one byte further than a writer counts.
                warnings.Add("unknown section", [&] {
                    return "unknown section " + std::to_string(id) + " at offset " +
                           std::to_string(source.Offset() - 5) + " skipped";
                });
                source.MoveTo(source.Cursor() + std::min<size_t>(sectionSize, source.Left()));
                break;
        }
    }
    if (source.Left() != 0) {
        notes.incomplete = std::to_string(source.Left()) +
                           (source.Left() == 1 ? " byte" : " bytes") + " at offset " +
                           std::to_string(source.Offset()) +
                           " cannot hold a section header: the file is cut short there";
    } else if (!anySection) {
        notes.incomplete = "the file holds no section: the library reads it as empty";
    }
    return document;
}

ZpsPresetStream PresetStreamOf(const std::vector<char>& bytes, size_t systemCount,
                               size_t userCount) {
    ZpsPresetStream stream;
    stream.systemCount = systemCount;
    stream.userCount = userCount;
    stream.forEach = [&bytes, systemCount, userCount](
                         bool user, const std::function<void(const ZpsPreset&)>& print) {
        if ((user ? userCount : systemCount) == 0) return;
        ZpsDecodeNotes again;
        DecodeZps(bytes, again, [&](ZpsPreset&& preset, bool isUser) {
            if (isUser == user) print(preset);
        });
    };
    return stream;
}

namespace {

// Makes the presets of the library's reader under one key (output mode 0, sound mode 0, base
// preset), so that the reader, which keeps the presets it parsed in a map by their modes, keeps
// only the last one: whether it refuses a file does not depend on the modes, and memory stays
// that of one preset however many the file holds.
class OneKeyPresetFactory : public IPresetFactory {
  public:
    std::shared_ptr<IPreset> Create(uint32_t, uint32_t, uint32_t, const std::string& name,
                                    const std::string& remarks, uint16_t flags, uint8_t priority,
                                    bool isUser) override {
        return m_factory.Create(0, 0, 0, name, remarks, flags, priority, isUser);
    }

  private:
    PresetFactory m_factory;
};

}  // namespace

std::vector<std::string> LibraryRefusal(const std::vector<char>& bytes) {
    constexpr uint32_t kErrorLevel = 4;
    LogRecorder recorder(kErrorLevel);
    // Parsing makes presets only; the set and handle factories serve Read, which is not called.
    ZpsBufferReader reader(std::make_shared<OneKeyPresetFactory>(), nullptr, nullptr);
    std::vector<std::string> texts;
    if (!reader.ParseBuffer(bytes, false)) {
        for (const LogRecorder::Line& line : recorder.Take()) texts.push_back(line.text);
        if (texts.empty()) texts.push_back("refused without a log line");
    }
    return texts;
}

}  // namespace zbctl
}  // namespace TesselFX
