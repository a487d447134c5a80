#include "platform/trace/ThreadText.h"

#include <climits>
#include <memory>
#include <new>

#include <pthread.h>

namespace platform::trace {

namespace {

pthread_key_t createKey() noexcept {
    pthread_key_t key = PTHREAD_KEYS_MAX; // the key of nobody
    pthread_key_create(&key, [](void* text) { delete static_cast<std::string*>(text); });
    return key;
}

const pthread_key_t kTextKey = createKey();

} // namespace

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

} // namespace platform::trace
