#ifndef QZXMLATTRIBUTEVIEW_H
#define QZXMLATTRIBUTEVIEW_H

#include <string_view>

/// One attribute of a QzXmlNodeView, as views into the reader's input or buffers: valid for as
/// long as the node view that holds it (see QzXmlNodeView).
struct QzXmlAttributeView {
    std::string_view qualifiedName;  ///< the name as written: prefix:local, or local
    std::string_view prefix;         ///< before the first colon; empty without one
    std::string_view localName;      ///< after the first colon, or the whole name
    std::string_view uri;            ///< the prefix's namespace; empty without a prefix
    std::string_view value;          ///< with references expanded as the reader expands them
};

#endif
