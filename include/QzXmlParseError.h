#ifndef QZXMLPARSEERROR_H
#define QZXMLPARSEERROR_H

#include "QzXmlExport.h"

#include <cstdint>

#include "QzXmlDomainError.h"

/// Malformed XML, with the line and column (both from 1) at which the reader found it.
class QZXML_API QzXmlParseError : public QzXmlDomainError {
public:
    /// An error with message msg, the thrower's context text and the position found.
    explicit QzXmlParseError(const QzCString& msg, const QzCString& context, std::uint64_t line,
                             std::uint64_t column);
    /// The same with the formatted text of msg as the message.
    explicit QzXmlParseError(const QzMessage& msg, const QzCString& context, std::uint64_t line,
                             std::uint64_t column);
    ~QzXmlParseError() override;

    /// The context text given by the thrower (empty for errors of the reader).
    const QzCString& getContext() const noexcept { return context_; }
    /// The line of the error, counted from 1.
    std::uint64_t getLine() const noexcept { return line_; }
    /// The column of the error, counted from 1.
    std::uint64_t getColumn() const noexcept { return column_; }

private:
    QzCString context_;
    std::uint64_t line_;
    std::uint64_t column_;
};

#endif
