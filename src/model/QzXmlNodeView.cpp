#include "QzXmlNodeView.h"

#include <string>

#include "QzXmlBoundsError.h"

void QzXmlNodeView::outOfRange(std::size_t i) const {
    throw QzXmlBoundsError(QzCString("Attribute index " + std::to_string(i) + " is past the " +
                                     std::to_string(attributeCount_) + " attributes"));
}
