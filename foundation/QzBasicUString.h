#ifndef QZBASICUSTRING_H
#define QZBASICUSTRING_H

#include "QzXmlExport.h"

#include <cstddef>
#include <string>

/// A UTF-16 string: a sequence of 16-bit code units held in counted storage.
class QZXML_API QzBasicUString {
public:
    /// The storage, which counts its code units.
    class Counter {
    public:
        /// Number of UTF-16 code units held.
        std::size_t length() const noexcept { return units_.size(); }

    private:
        friend class QzBasicUString;
        std::u16string units_;
    };

    QzBasicUString() = default;
    /// A copy of the given code units.
    explicit QzBasicUString(std::u16string units) { counter_.units_ = std::move(units); }

    /// Number of UTF-16 code units.
    std::size_t length() const noexcept { return counter_.length(); }
    /// The code units in order.
    const char16_t* data() const noexcept { return counter_.units_.data(); }
    /// The counted storage.
    const Counter& counter() const noexcept { return counter_; }

protected:
    /// Writable access to the code units for derived decoders.
    std::u16string& units() noexcept { return counter_.units_; }

private:
    Counter counter_;
};

#endif
