#ifndef QZXMLCOMPARISON_H
#define QZXMLCOMPARISON_H

#include <cstdint>

#include "QzCString.h"

/// The answer of QzXmlUtils::compareDocuments: whether two documents are equal and, when they
/// are not, what the first difference is and where it lies in each of them.
class QzXmlComparison {
public:
    /// Where the first difference lies in one document.
    class Place {
    public:
        std::uint64_t line =
            0;  ///< line of the differing node's first byte (1 = first; 0 if equal)
        std::uint64_t column = 0;  ///< its column, counting bytes of the UTF-8 text from 1
        QzCString path;            ///< the element it is in or is, as "/order[1]/item[2]"
    };

    bool equal = true;  ///< the documents carry the same information
    /// The first difference, as "text \"2\" against text \"3\""; empty when equal.
    QzCString message;
    Place first;   ///< the difference's place in the first document
    Place second;  ///< the difference's place in the second document
};

#endif
