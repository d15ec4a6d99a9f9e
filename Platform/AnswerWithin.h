#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace Platform {

/// Asks, on a thread of its own, what a disk or a server may never answer, and waits so long for it. An answer that comes later
/// is dropped: ask must own all that it uses, and may run on until the process ends.
///
/// @return what ask() gave; nothing where that took longer, or where the system gives no more threads
///
/// Blocking; any thread.
template <typename Ask>
auto answerWithin(std::chrono::milliseconds patience, Ask ask) -> std::optional<decltype(ask())> {
    const auto answer = std::make_shared<std::promise<decltype(ask())>>();
    auto coming = answer->get_future();
    try {
        std::thread([answer, ask = std::move(ask)] { answer->set_value(ask()); }).detach();
    } catch (const std::system_error&) {
        return std::nullopt;
    }
    if (coming.wait_for(patience) != std::future_status::ready) {
        return std::nullopt;
    }
    return coming.get();
}

} // namespace Platform
