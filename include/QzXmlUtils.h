#ifndef QZXMLUTILS_H
#define QZXMLUTILS_H

#include "QzXmlExport.h"

#include <cstdint>

#include "QzCString.h"
#include "QzDate.h"
#include "QzDateTime.h"
#include "QzXmlCompareOptions.h"
#include "QzXmlComparison.h"

class QzXmlAttributeSet;
class QzXmlName;
class QzXmlReader;

/// Static string and numeric constants, ISO 8601 conversions, name and text helpers and
/// character-set conversion. The class has no instances.
class QZXML_API QzXmlUtils {
public:
    QzXmlUtils() = delete;

    static const QzCString Blank;          ///< " "
    static const QzCString Newline;        ///< "\n"
    static const QzCString Tab;            ///< "\t"
    static const QzCString WhiteSpace;     ///< " \n\t"
    static const QzCString EmptyString;    ///< ""
    static const QzCString Hypen;          ///< "-" (historic spelling, kept for callers)
    static const QzCString Hyphen;         ///< "-"
    static const QzCString Colon;          ///< ":"
    static const QzCString Plus;           ///< "+"
    static const QzCString Minus;          ///< "-"
    static const QzCString TimeSeparator;  ///< "T"
    static const QzCString UTimeZone;      ///< "Z"
    static const QzCString TZD;            ///< "Z+-": the bytes that can open a zone designator
    static const QzCString ISO8601Format;  ///< "%Y-%m-%dT%X"
    static const QzCString ISO8601Date;    ///< "%Y-%m-%d"
    static const QzCString ISO8601Time;    ///< "%X"

    static constexpr unsigned char TabUtf8 = 9;             ///< tab in UTF-8
    static constexpr unsigned char NewlineUtf8 = 10;        ///< line feed in UTF-8
    static constexpr unsigned char BlankUtf8 = 32;          ///< space in UTF-8
    static constexpr std::uint64_t MinDateTimeLength = 19;  ///< as in 2001-02-03T04:05:06
    static constexpr std::uint64_t MinTimeLength = 8;       ///< as in 04:05:06
    static constexpr std::uint64_t MinDateLength = 10;      ///< as in 2001-02-03

    /// Formats dateTime in UTC: with ISO8601Format the ISO 8601 text (fraction after "."),
    /// with any other strftime pattern that pattern in the "C" locale.
    static QzCString convertDateTimeToISOString(const QzDateTime& dateTime,
                                                const QzCString& format);
    /// Parses ISO 8601 text (UTC unless it names a zone); malformed text gives the invalid value.
    static QzDateTime convertISODateStringToDateTime(const QzCString& text);
    /// The date's local midnight written as a UTC date (so east of UTC, the day before).
    static QzCString convertDateToISOString(const QzDate& date);
    /// The UTC calendar date of the ISO 8601 text.
    static QzDate convertISODateStringToDate(const QzCString& text);

    /// text without the space, tab and line feed bytes at the ends that where selects.
    static QzCString stripWhiteSpaceAndNewlines(const QzCString& text, QzCString::stripType where);
    /// The bytes before the first ":", or the empty string.
    static QzCString getPrefix(const QzCString& qualifiedName);
    /// Splits at the first ":"; without one, prefix is left unchanged.
    static void getPrefixAndLocalName(const QzCString& qualifiedName, QzCString& prefix,
                                      QzCString& localName);
    /// A copy of a one-element text whose outer element is renamed to name, declaring the
    /// name's namespace unless the start tag already binds its URI to a prefix.
    static QzCString changeName(const QzXmlName& name, const QzCString& element);
    /// data converted from one ICU character set to another; throws QzXmlBadArgError.
    static QzCString convertCharset(const QzCString& data, const QzCString& fromCharset,
                                    const QzCString& toCharset);

    /// Whether two documents carry the same elements, attributes and significant text.
    /// Forgiven: attribute order, text before the first tag and after any end tag,
    /// whitespace-only text where the other side has a tag, and an empty-element tag against
    /// a start tag closed at once. Throws QzXmlParseError when either text is malformed.
    static bool compareXml(const QzCString& first, const QzCString& second);
    /// Whether two documents carry the same information, and if not their first difference
    /// with its place in each: element and attribute names by namespace URI and local name,
    /// attributes in any order, texts byte for byte, the rest as options says. Throws
    /// QzXmlParseError when either text is malformed or has an unmatched end tag.
    static QzXmlComparison compareDocuments(
        const QzCString& first, const QzCString& second,
        const QzXmlCompareOptions& options = QzXmlCompareOptions());
    /// Same size and, in set order, equal names and byte-equal values.
    static bool compareAttributeSet(const QzXmlAttributeSet& a, const QzXmlAttributeSet& b);
    /// Whether reader stands on a start tag that its next node closes at once (reading that
    /// node). other is not used.
    static bool verifyEmptyTag(QzXmlReader& reader, QzXmlReader& other);
    /// Whether reader stands on whitespace-only text (space, tab, LF); if so reads the next
    /// node. other is not used.
    static bool verifyEmptyData(QzXmlReader& reader, QzXmlReader& other);
};

#endif
