#ifndef QZXMLNODEVIEW_H
#define QZXMLNODEVIEW_H

#include "QzXmlExport.h"

#include <cstddef>
#include <string_view>
#include <vector>

#include "QzXmlAttributeView.h"

/// The reader's current node without a copy: the same name, attributes and text as its owned
/// accessors (getCurrentName, getCurrentAttributes, getValue) return, as views into the
/// document, the reader's window or its scratch buffers. A view and the strings it gives are
/// valid until the reader's next read, namespace change or destruction; the reader updates
/// the same view object in place.
class QZXML_API QzXmlNodeView {
public:
    /// The local name of the tag read last.
    std::string_view localName() const noexcept { return qualifiedName_.substr(localStart_); }
    /// Its prefix; empty without one.
    std::string_view prefix() const noexcept {
        return qualifiedName_.substr(0, localStart_ != 0 ? localStart_ - 1 : 0);
    }
    /// Its namespace URI; empty when the name is in no namespace.
    std::string_view uri() const noexcept { return uri_; }
    /// Its name as written.
    std::string_view qualifiedName() const noexcept { return qualifiedName_; }
    /// The text of the content node read last, references expanded and line ends normalised.
    std::string_view text() const noexcept { return text_; }
    /// The number of attributes of the start tag read last, in getCurrentAttributes' order.
    std::size_t attributeCount() const noexcept { return attributeCount_; }
    /// Attribute i (0-based); throws QzXmlBoundsError when i >= attributeCount().
    const QzXmlAttributeView& attribute(std::size_t i) const {
        if (i >= attributeCount_) outOfRange(i);
        return attributes_[i];
    }

private:
    // The reader points the view at each node as it reads it.
    friend class QzXmlReader;

    [[noreturn]] void outOfRange(std::size_t i) const;

    std::string_view qualifiedName_;
    std::size_t localStart_ = 0;  ///< 0 without a prefix, else just after the first colon
    std::string_view uri_;
    std::string_view text_;
    std::vector<QzXmlAttributeView> attributes_;  ///< the first attributeCount_ are the node's
    std::size_t attributeCount_ = 0;
};

#endif
