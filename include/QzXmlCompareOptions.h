#ifndef QZXMLCOMPAREOPTIONS_H
#define QZXMLCOMPAREOPTIONS_H

#include "QzXmlReaderOptions.h"

/// What QzXmlUtils::compareDocuments counts as a difference beyond elements, attributes and
/// text. Element and attribute names are always compared by namespace URI and local name,
/// attributes regardless of order, namespace declarations not at all.
class QzXmlCompareOptions {
public:
    /// Text of nothing but space, tab, line feed and carriage return is skipped on both sides.
    bool ignoreWhitespaceText = true;
    /// Comments are compared, and split the text around them.
    bool compareComments = false;
    /// Processing instructions are compared by target and data, and split the text around them.
    bool compareProcessingInstructions = false;
    /// How both documents are read: leniently, as the reader's own constructors read, unless
    /// set otherwise.
    QzXmlReaderOptions readerOptions;
};

#endif
