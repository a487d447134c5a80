#include "platform/trace/TraceText.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>
#include <memory>
#include <new>
#include <system_error>
#include <utility>

#include <pthread.h>
#include <unistd.h>

#include "common/FormatTime.h"

namespace platform::trace {

namespace {

const pthread_key_t kTextKey = []() noexcept {
    pthread_key_t key = PTHREAD_KEYS_MAX; // the key of nobody
    pthread_key_create(&key, [](void* text) { delete static_cast<std::string*>(text); });
    return key;
}();

std::string& threadText() {
    if (auto* const text = static_cast<std::string*>(pthread_getspecific(kTextKey))) {
        return *text;
    }
    auto text = std::make_unique<std::string>();
    if (pthread_setspecific(kTextKey, text.get()) != 0) {
        throw std::bad_alloc();
    }
    return *text.release(); // the key owns it from here
}

} // namespace

const char* formatted(const char* format, std::va_list arguments) {
    std::va_list measured;
    va_copy(measured, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_copy, which it misses, sets it.
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    const int error = errno;
    va_end(measured);
    // Made before the previous text goes, which may be among the arguments.
    std::string text;
    if (length < 0) {
        text = std::string("(cannot format \"") + format +
               "\": " + std::generic_category().message(error) + ")";
    } else {
        text.resize(static_cast<std::size_t>(length));
        std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    }
    return (threadText() = std::move(text)).c_str();
}

std::string lineOf(const std::string& object, ruxa::trace::v2::TraceGroup::e group,
                   const std::string& origin, const std::string& text) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return common::formatTime(now.tv_sec * 1'000'000'000 + now.tv_nsec) + " " +
           std::to_string(getpid()) + " " + std::to_string(gettid()) + " " + object + " " +
           std::to_string(group) + " " + origin + " " + text;
}

} // namespace platform::trace
