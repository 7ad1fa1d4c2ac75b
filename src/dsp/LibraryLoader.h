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

  private:
    void* m_handle = nullptr;
    std::unordered_map<std::string, void*> m_functions;
};

}  // namespace TesselFX
