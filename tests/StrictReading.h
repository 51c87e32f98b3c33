#ifndef QZXML_TESTS_STRICTREADING_H
#define QZXML_TESTS_STRICTREADING_H

#include <string>

#include "QzXmlParseError.h"
#include "QzXmlReaderOptions.h"

// What the strict reader's tests share: its options, and an error as "line:column message".

inline QzXmlReaderOptions strict() {
    QzXmlReaderOptions options;
    options.strict = true;
    return options;
}

inline std::string placed(const QzXmlParseError& e) {
    return std::to_string(e.getLine()) + ":" + std::to_string(e.getColumn()) + " " + e.why();
}

#endif
