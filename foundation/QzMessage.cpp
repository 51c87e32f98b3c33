#include "QzMessage.h"

#include <cstdarg>
#include <cstdio>

QzMessage::QzMessage(const QzCatMsg* msg, ...) : record_(msg) {
    if (msg == nullptr || msg->defaultText == nullptr) return;
    std::va_list args;
    va_start(args, msg);
    std::va_list again;
    va_copy(again, args);
    const int n = std::vsnprintf(nullptr, 0, msg->defaultText, args);
    va_end(args);
    if (n > 0) {
        text_.resize(static_cast<std::size_t>(n));
        std::vsnprintf(text_.data(), text_.size() + 1, msg->defaultText, again);
    }
    va_end(again);
}
