#ifndef QZMESSAGE_H
#define QZMESSAGE_H

#include "QzXmlExport.h"

#include <string>

#include "QzCatMsg.h"

/// A formatted, localisable message: a catalog record's text formatted printf-style with
/// the arguments. No translations are installed, so the record's default text is used.
class QZXML_API QzMessage {
public:
    /// Formats msg's text with the printf-style arguments that follow.
    explicit QzMessage(const QzCatMsg* msg, ...);

    /// The formatted text.
    const char* str() const noexcept { return text_.c_str(); }
    /// The record the message was made from.
    const QzCatMsg* record() const noexcept { return record_; }

private:
    const QzCatMsg* record_;
    std::string text_;
};

#endif
