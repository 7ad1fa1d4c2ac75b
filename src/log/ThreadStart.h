#pragma once

#include <system_error>
#include <thread>
#include <utility>

namespace TesselFX {

/// Starts a joinable thread; a failure raises std::system_error "thread constructor failed".
template <typename Function>
std::thread StartThread(Function&& function) {
    try {
        return std::thread(std::forward<Function>(function));
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), "thread constructor failed");
    }
}

}  // namespace TesselFX
