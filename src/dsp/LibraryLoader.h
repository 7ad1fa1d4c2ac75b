#pragma once

#include <string>
#include <unordered_map>

namespace TesselFX {

/// Opens a dynamic library for its whole lifetime and keeps the addresses of the entry
/// points resolved by name. The library is closed by the destructor. Not thread safe.
class LibraryLoader {
  public:
    /// dlopen(path, flags); failure is logged and leaves the loader without a handle.
    LibraryLoader(const std::string& path, int flags);
    virtual ~LibraryLoader();
    LibraryLoader(const LibraryLoader&) = delete;
    LibraryLoader& operator=(const LibraryLoader&) = delete;

    bool IsLoaded() const { return m_handle != nullptr; }
    /// Looks name up and keeps its address when the lookup succeeds; a missing entry point
    /// is not an error here.
    void Resolve(const char* name);
    /// The kept address of name, or null.
    void* Find(const std::string& name) const;
    /// The same for a name that stays at its address, such as a literal: the answer is kept
    /// by the name's address, so that a call made per parameter does not hash the name.
    void* FindLiteral(const char* name) const;

  private:
    void* m_handle = nullptr;
    std::unordered_map<std::string, void*> m_functions;
    /// Answers of FindLiteral, and the last one apart; emptied whenever m_functions changes.
    mutable std::unordered_map<const char*, void*> m_literals;
    mutable const char* m_lastLiteral = nullptr;
    mutable void* m_lastAddress = nullptr;
};

}  // namespace TesselFX
