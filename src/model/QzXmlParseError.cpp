#include "QzXmlParseError.h"

QzXmlParseError::QzXmlParseError(const QzCString& msg, const QzCString& context, std::uint64_t line,
                                 std::uint64_t column)
    : QzXmlDomainError(msg), context_(context), line_(line), column_(column) {}

QzXmlParseError::QzXmlParseError(const QzMessage& msg, const QzCString& context, std::uint64_t line,
                                 std::uint64_t column)
    : QzXmlDomainError(msg), context_(context), line_(line), column_(column) {}

QzXmlParseError::~QzXmlParseError() = default;
