#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>

namespace TesselFX {

/// In-memory INI tree. Sections and keys are looked up and iterated case-insensitively
/// (strcasecmp order, not file order). Names passed in are trimmed of blanks and tabs first.
/// Not thread safe: a CIniFile belongs to one thread at a time. Sections and keys are owned by
/// their container; pointers to them stay valid until they are removed or the file is cleared.
class CIniFile {
  public:
    class CSection;

    /// strcasecmp order on names.
    struct NameLess {
        bool operator()(const std::string& a, const std::string& b) const;
    };

    class CKey {
      public:
        CKey(CSection* owner, const std::string& name);
        CSection* GetOwner() const { return m_pSection; }
        const std::string& GetName() const { return m_name; }
        const std::string& GetValue() const { return m_value; }
        void SetValue(const std::string& value) { m_value = value; }

      private:
        friend class CIniFile;
        CSection* m_pSection;
        std::string m_name;
        std::string m_value;
    };

    using KeyMap = std::map<std::string, std::unique_ptr<CKey>, NameLess>;

    class CSection {
      public:
        CSection(CIniFile* owner, const std::string& name);
        CIniFile* GetOwner() const { return m_pIniFile; }
        const std::string& GetName() const { return m_name; }
        const KeyMap& GetKeys() const { return m_keys; }

        CKey* GetKey(const std::string& name) const;
        /// A new key has an empty value.
        CKey* GetOrCreateKey(const std::string& name);
        void RemoveKey(const std::string& name);
        void RemoveKey(CKey* key);
        /// False if a key of the new name exists or none of the old name does.
        bool RenameKey(const std::string& oldName, const std::string& newName);

      private:
        friend class CIniFile;
        CIniFile* m_pIniFile;
        std::string m_name;
        KeyMap m_keys;
    };

    using SectionMap = std::map<std::string, std::unique_ptr<CSection>, NameLess>;

    CIniFile();
    virtual ~CIniFile();
    CIniFile(const CIniFile&) = delete;
    CIniFile& operator=(const CIniFile&) = delete;

    /// Reads the file and parses it; false if it cannot be opened (the tree is then unchanged).
    bool LoadFile(const std::string& path, bool merge = false);
    /// Parses the whole rest of an open stream up to its first NUL.
    void LoadStream(FILE* stream, bool merge = false);
    /// Parses text up to its first NUL. Without merge the tree is cleared first; with merge,
    /// values of existing keys are overwritten and other content stays.
    void LoadMemory(const std::string& text, bool merge = false);
    /// Writes "[name]" and "key=value" lines; comments are not kept.
    bool Save(const std::string& path) const;
    /// Logs the tree at level 1 when that level is on.
    void Dump() const;

    const SectionMap& GetSections() const { return m_sections; }
    CSection* GetSection(const std::string& name) const;
    CSection* GetOrCreateSection(const std::string& name);
    void RemoveSection(const std::string& name);
    void RemoveSection(CSection* section);
    bool RenameSection(const std::string& oldName, const std::string& newName);
    bool RenameKey(const std::string& section, const std::string& oldName,
                   const std::string& newName);

    /// The value, or an empty string if the section or key is absent.
    std::string GetValue(const std::string& section, const std::string& key) const;
    void SetValue(const std::string& section, const std::string& key, const std::string& value);

    /// Decimal/hexadecimal reads; false for an empty or blank value. Text without digits leaves
    /// out as it was and still returns true: callers must treat such text as undefined.
    bool LoadIntVal(const std::string& section, const std::string& key, int32_t& out) const;
    bool LoadHexVal(const std::string& section, const std::string& key, int32_t& out) const;
    /// Empty value: out = defaultValue. Otherwise the value must equal one of the two words.
    bool LoadBoolVal(const std::string& section, const std::string& key,
                     const std::string& trueWord, const std::string& falseWord, bool defaultValue,
                     bool& out) const;

    /// Strips leading and trailing blanks and tabs.
    static std::string Trim(const std::string& text);

  private:
    // Operations on the name-keyed maps of owned sections or keys; names are trimmed.
    template <typename Map>
    static typename Map::mapped_type::element_type* FindEntry(const Map& map,
                                                              const std::string& name);
    template <typename Map, typename Owner>
    static typename Map::mapped_type::element_type* GetOrCreateEntry(Map& map,
                                                                     const std::string& name,
                                                                     Owner* owner);
    /// Removes the entry only if it is this very object.
    template <typename Map>
    static void RemoveEntry(Map& map, const typename Map::mapped_type::element_type* entry);
    /// Renames an entry by taking its node out and in.
    template <typename Map>
    static bool RenameEntry(Map& map, const std::string& oldName, const std::string& newName);
    /// The number of a value as "%d" (hex false) or "%x" reads it; see LoadIntVal.
    bool LoadNumber(const std::string& section, const std::string& key, bool hex,
                    int32_t& out) const;

    SectionMap m_sections;
};

}  // namespace TesselFX
