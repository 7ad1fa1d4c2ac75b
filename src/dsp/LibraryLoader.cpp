#include "dsp/LibraryLoader.h"

#include <dlfcn.h>

#include "dsp/ZorbEffectLog.h"

namespace TesselFX {

LibraryLoader::LibraryLoader(const std::string& path, int flags) {
    m_functions.max_load_factor(1.0f);
    m_handle = dlopen(path.c_str(), flags);
    if (m_handle == nullptr) ZorbEffectLogError("Failed to open library: %s", path.c_str());
}

LibraryLoader::~LibraryLoader() {
    if (m_handle != nullptr) dlclose(m_handle);
}

void LibraryLoader::Resolve(const char* name) {
    if (m_handle == nullptr) return;
    void* address = dlsym(m_handle, name);
    const char* error = dlerror();
    if (address != nullptr && error == nullptr) m_functions[name] = address;
    m_literals.clear();
    m_lastLiteral = nullptr;
}

void* LibraryLoader::Find(const std::string& name) const {
    const auto it = m_functions.find(name);
    return it != m_functions.end() ? it->second : nullptr;
}

void* LibraryLoader::FindLiteral(const char* name) const {
    if (name == m_lastLiteral) return m_lastAddress;
    auto known = m_literals.find(name);
    if (known == m_literals.end()) known = m_literals.emplace(name, Find(name)).first;
    m_lastLiteral = name;
    m_lastAddress = known->second;
    return m_lastAddress;
}

}  // namespace TesselFX
