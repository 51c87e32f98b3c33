#include "QzXmlUtils.h"

#include <algorithm>
#include <string>

#include "QzCTokenizer.h"
#include "QzDate.h"
#include "QzDateTime.h"
#include "QzLocaleSnapshot.h"
#include "QzUFromUnicodeConverter.h"
#include "QzUInit.h"
#include "QzUString.h"
#include "QzUToUnicodeConverter.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlBadArgError.h"
#include "QzXmlInfosetWalker.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"
#include "QzXmlReader.h"
#include "QzZone.h"
#include "Qzxmsg.h"

// Built at load time in this order; read-only afterwards.
const QzCString QzXmlUtils::Blank(" ");
const QzCString QzXmlUtils::Newline("\n");
const QzCString QzXmlUtils::Tab("\t");
const QzCString QzXmlUtils::WhiteSpace(" \n\t");
const QzCString QzXmlUtils::EmptyString;
const QzCString QzXmlUtils::Hypen("-");
const QzCString QzXmlUtils::Hyphen("-");
const QzCString QzXmlUtils::Colon(":");
const QzCString QzXmlUtils::Plus("+");
const QzCString QzXmlUtils::Minus("-");
const QzCString QzXmlUtils::TimeSeparator("T");
const QzCString QzXmlUtils::UTimeZone("Z");
const QzCString QzXmlUtils::TZD("Z+-");
const QzCString QzXmlUtils::ISO8601Format("%Y-%m-%dT%X");
const QzCString QzXmlUtils::ISO8601Date("%Y-%m-%d");
const QzCString QzXmlUtils::ISO8601Time("%X");

namespace {

bool isXmlUtilsWhiteSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n';
}

// Dates are read and written in UTC (and the "C" locale), whatever the process's settings.
const QzZone& utc() {
    return QzZone::utc();
}

// A prefixed declaration in the start-tag body that binds uri makes a new one unnecessary.
bool bodyDeclaresUri(const QzCString& body, const QzCString& uri) {
    QzCTokenizer next(body);
    // The delimiters are the white space bytes and NUL, so pass the terminator too.
    const char* delims = QzXmlUtils::WhiteSpace.c_str();
    const QzSize_T ndelims = QzXmlUtils::WhiteSpace.length() + 1;
    next(delims, ndelims);  // the old tag name
    for (QzCString token = next(delims, ndelims); !token.empty(); token = next(delims, ndelims)) {
        const QzCString attrName = token.substr(0, token.find('='));
        // The value runs from after the first double quote to before the token's last byte;
        // without a quote it starts at 0, as the unsigned arithmetic wraps.
        const QzSize_T start = token.find('"') + 1;
        const QzSize_T last = token.length() - 1;
        const QzCString value = start < last ? token.substr(start, last - start) : QzCString();
        QzCString prefix;
        QzCString localName;
        QzXmlUtils::getPrefixAndLocalName(attrName, prefix, localName);
        if (prefix == QzXmlNamespace::getXmlns().getPrefix() && value == uri) return true;
    }
    return false;
}

// Where the attributes of a start-tag body begin: past the blanks and the word after byte 0.
QzSize_T attributesStart(const QzCString& body) {
    const char* s = body.data();
    const QzSize_T len = body.length();
    QzSize_T pos = len == 0 ? 0 : 1;
    while (pos < len && s[pos] == ' ')
        ++pos;
    while (pos < len && s[pos] != ' ')
        ++pos;
    return pos;
}

}  // namespace

QzCString QzXmlUtils::convertDateTimeToISOString(const QzDateTime& dateTime,
                                                 const QzCString& format) {
    const QzLocaleSnapshot cLocale("C");
    if (format != ISO8601Format) return dateTime.asString(format.c_str(), cLocale, utc());
    QzCString text = dateTime.asString(QzDateTime::iso8601, cLocale, utc());
    const QzSize_T comma = text.find(',');
    if (comma != QzCString::npos) text[comma] = '.';
    return text;
}

QzDateTime QzXmlUtils::convertISODateStringToDateTime(const QzCString& text) {
    return QzDateTime(text, QzDateTime::iso8601, QzLocaleSnapshot("C"), utc());
}

QzCString QzXmlUtils::convertDateToISOString(const QzDate& date) {
    const QzLocaleSnapshot cLocale("C");
    // Local midnight written in UTC: east of UTC that is the day before, as callers expect.
    const QzDateTime midnight(date, 0, 0, 0, 0, QzZone::local());
    QzCString text = midnight.asString(QzDateTime::iso8601, cLocale, utc());
    const QzSize_T t = text.find('T');
    if (t != QzCString::npos) text.resize(t);
    return text;
}

QzDate QzXmlUtils::convertISODateStringToDate(const QzCString& text) {
    const QzDateTime dateTime = convertISODateStringToDateTime(text);
    return QzDate(dateTime.dayOfMonth(utc()), dateTime.month(utc()), dateTime.year(utc()));
}

QzCString QzXmlUtils::stripWhiteSpaceAndNewlines(const QzCString& text,
                                                 QzCString::stripType where) {
    const char* s = text.data();
    QzSize_T first = 0;
    QzSize_T last = text.length();
    if (where & QzCString::leading) {
        while (first < last && isXmlUtilsWhiteSpace(s[first]))
            ++first;
    }
    if (where & QzCString::trailing) {
        while (last > first && isXmlUtilsWhiteSpace(s[last - 1]))
            --last;
    }
    return QzCString(s + first, last - first);
}

QzCString QzXmlUtils::getPrefix(const QzCString& qualifiedName) {
    const QzSize_T colon = qualifiedName.find(Colon.data()[0]);
    return colon == QzCString::npos ? QzCString() : qualifiedName.substr(0, colon);
}

void QzXmlUtils::getPrefixAndLocalName(const QzCString& qualifiedName, QzCString& prefix,
                                       QzCString& localName) {
    const QzSize_T colon = qualifiedName.find(Colon.data()[0]);
    if (colon == QzCString::npos) {
        // The prefix is deliberately left as the caller had it.
        localName = qualifiedName;
        return;
    }
    prefix = qualifiedName.substr(0, colon);
    localName = qualifiedName.substr(colon + 1);
}

QzCString QzXmlUtils::changeName(const QzXmlName& name, const QzCString& element) {
    if (element.empty() || element.data()[0] != '<') return element;
    const QzSize_T firstGt = element.find('>', 1);
    const QzSize_T lastLt = element.std().rfind('<');
    if (firstGt == QzCString::npos || lastLt == 0 || firstGt >= lastLt) return element;

    const QzCString body = element.substr(1, firstGt - 1);
    const QzCString& uri = name.getURI();
    const bool declare =
        uri != QzXmlNamespace::getEmptyNamespace().getURI() && !bodyDeclaresUri(body, uri);
    const QzSize_T attrs = attributesStart(body);

    const QzCString qualifiedName = name.getQualifiedName();
    QzCString result(element.length() + uri.length() + qualifiedName.length() + 16);
    result.append("<", 1).append(qualifiedName);
    if (declare) {
        result.append(" xmlns:", 7).append(name.getPrefix()).append("=\"", 2);
        result.append(uri).append("\" ", 2);
    }
    result.append(body.data() + attrs, body.length() - attrs).append(">", 1);
    result.append(element.data() + firstGt + 1, lastLt - firstGt - 1);
    result.append("</>\n", 4);
    return result;
}

QzCString QzXmlUtils::convertCharset(const QzCString& data, const QzCString& fromCharset,
                                     const QzCString& toCharset) {
    try {
        const QzUInit guard;
        QzUToUnicodeConverter decoder(fromCharset.c_str());
        QzUFromUnicodeConverter encoder(toCharset.c_str());
        const QzUString units(data, decoder);
        // QzUString's units are UTF-16 code units, the representation toBytes expects.
        return QzUString::toBytes(reinterpret_cast<const unsigned short*>(units.data()),
                                  units.length(), encoder);
    } catch (const Qzxmsg& e) {
        throw QzXmlBadArgError(QzCString("Character set conversion failed: ") + e.why());
    }
}

bool QzXmlUtils::compareAttributeSet(const QzXmlAttributeSet& a, const QzXmlAttributeSet& b) {
    if (a.size() != b.size()) return false;
    return std::equal(a.begin(), a.end(), b.begin(),
                      [](const QzXmlAttribute& x, const QzXmlAttribute& y) {
                          return x.getName() == y.getName() && x.getValue() == y.getValue();
                      });
}

// Text between the start tag and its end tag is never forgiven here, and the names need not
// match the other side's empty-element tag: both on purpose.
bool QzXmlUtils::verifyEmptyTag(QzXmlReader& reader, QzXmlReader&) {
    if (reader.getNodeType() != QzXmlReader::StartTag) return false;
    reader.readNextNode();
    return reader.getNodeType() == QzXmlReader::EndTag;
}

bool QzXmlUtils::verifyEmptyData(QzXmlReader& reader, QzXmlReader&) {
    if (reader.getNodeType() != QzXmlReader::Content) return false;
    if (!stripWhiteSpaceAndNewlines(reader.getValue(), QzCString::both).empty()) return false;
    reader.readNextNode();
    return true;
}

namespace {

// What became of two nodes of different kinds.
enum class Mismatch { Different, Forgiven, NowAlike };

// An empty-element tag against a start tag closed at once is forgiven; whitespace-only text
// against a tag is skipped, after which the two nodes must be of one kind to be compared.
Mismatch settleMismatch(QzXmlReader& a, QzXmlReader& b) {
    const QzXmlReader::NodeType ta = a.getNodeType();
    const QzXmlReader::NodeType tb = b.getNodeType();
    if (ta == QzXmlReader::EmptyElement || tb == QzXmlReader::EmptyElement) {
        const bool forgiven = ta == QzXmlReader::EmptyElement ? QzXmlUtils::verifyEmptyTag(b, a)
                                                              : QzXmlUtils::verifyEmptyTag(a, b);
        return forgiven ? Mismatch::Forgiven : Mismatch::Different;
    }
    bool skipped;
    if (ta == QzXmlReader::StartTag || ta == QzXmlReader::EndTag) {
        skipped = QzXmlUtils::verifyEmptyData(b, b);
    } else {
        skipped = (tb == QzXmlReader::StartTag || tb == QzXmlReader::EndTag) &&
                  QzXmlUtils::verifyEmptyData(a, b);
    }
    return skipped && a.getNodeType() == b.getNodeType() ? Mismatch::NowAlike : Mismatch::Different;
}

}  // namespace

// Two pull readers walk side by side. textIgnored is set after matching end tags, so text
// that follows an end tag (or precedes the first tag) is never compared.
bool QzXmlUtils::compareXml(const QzCString& first, const QzCString& second) {
    QzXmlReader a(first);
    QzXmlReader b(second);
    bool textIgnored = true;
    for (;;) {
        if (a.eof()) return b.eof();
        if (b.eof()) return false;
        a.readNextNode();
        b.readNextNode();
        if (a.getNodeType() == QzXmlReader::NoNode || b.getNodeType() == QzXmlReader::NoNode) {
            return false;
        }
        if (a.getNodeType() != b.getNodeType()) {
            const Mismatch mismatch = settleMismatch(a, b);
            if (mismatch == Mismatch::Different) return false;
            if (mismatch == Mismatch::Forgiven) continue;
        }
        switch (a.getNodeType()) {
            case QzXmlReader::EndTag:
                if (a.getCurrentName() != b.getCurrentName()) return false;
                textIgnored = true;
                break;
            case QzXmlReader::StartTag:
            case QzXmlReader::EmptyElement:
                if (a.getCurrentName() != b.getCurrentName() ||
                    !compareAttributeSet(a.getCurrentAttributes(), b.getCurrentAttributes())) {
                    return false;
                }
                textIgnored = false;
                break;
            default:
                if (!textIgnored && a.getValue() != b.getValue()) return false;
                break;
        }
    }
}

namespace {

using Item = QzXmlInfosetWalker::Item;
using Kind = QzXmlInfosetWalker::Kind;

// A text in double quotes on one line: quotes, backslashes and control bytes escaped, and
// cut to its first 60 bytes.
std::string quoted(const QzCString& text) {
    static const char hex[] = "0123456789abcdef";
    constexpr std::size_t shown = 60;
    std::string out = "\"";
    for (std::size_t i = 0; i < text.length() && i < shown; ++i) {
        const auto b = static_cast<unsigned char>(text.data()[i]);
        if (b == '"' || b == '\\') {
            out += '\\';
            out += static_cast<char>(b);
        } else if (b < 0x20) {
            out += b == '\n' ? "\\n" : b == '\t' ? "\\t" : b == '\r' ? "\\r" : "\\x";
            if (b != '\n' && b != '\t' && b != '\r') {
                out += hex[b >> 4];
                out += hex[b & 15];
            }
        } else {
            out += static_cast<char>(b);
        }
    }
    return out + (text.length() > shown ? "\"..." : "\"");
}

std::string describe(const Item& item) {
    switch (item.kind) {
        case Kind::StartElement:
            return "element " + item.key.std();
        case Kind::EndElement:
            return "end of element " + item.key.std();
        case Kind::Text:
            return "text " + quoted(item.text);
        case Kind::Comment:
            return "comment " + quoted(item.text);
        case Kind::ProcessingInstruction:
            return "processing instruction " + item.key.std() + " " + quoted(item.text);
        case Kind::End:
            break;
    }
    return "end of document";
}

std::string describeAttribute(const std::pair<QzCString, QzCString>& attribute) {
    return "attribute " + attribute.first.std() + "=" + quoted(attribute.second);
}

// The first attribute that one tag has and the other lacks or holds with another value.
std::string attributeDifference(const Item& a, const Item& b) {
    std::size_t i = 0, j = 0;
    while (i < a.attributes.size() || j < b.attributes.size()) {
        const bool onlyA =
            j == b.attributes.size() ||
            (i < a.attributes.size() && a.attributes[i].first < b.attributes[j].first);
        if (onlyA) {
            return describeAttribute(a.attributes[i]) + " against no attribute " +
                   a.attributes[i].first.std();
        }
        if (i == a.attributes.size() || b.attributes[j].first < a.attributes[i].first) {
            return "no attribute " + b.attributes[j].first.std() + " against " +
                   describeAttribute(b.attributes[j]);
        }
        if (a.attributes[i].second != b.attributes[j].second) {
            return describeAttribute(a.attributes[i]) + " against " +
                   describeAttribute(b.attributes[j]);
        }
        ++i;
        ++j;
    }
    return {};
}

// What tells two items apart, or nothing when they are equal.
std::string difference(const Item& a, const Item& b) {
    if (a.kind != b.kind || a.key != b.key || a.text != b.text) {
        return describe(a) + " against " + describe(b);
    }
    return attributeDifference(a, b);
}

}  // namespace

QzXmlComparison QzXmlUtils::compareDocuments(const QzCString& first, const QzCString& second,
                                             const QzXmlCompareOptions& options) {
    QzXmlInfosetWalker a(first, options);
    QzXmlInfosetWalker b(second, options);
    for (;;) {
        const Item& itemA = a.next();
        const Item& itemB = b.next();
        const std::string message = difference(itemA, itemB);
        if (!message.empty()) {
            QzXmlComparison comparison;
            comparison.equal = false;
            comparison.message = message;
            comparison.first = a.place();
            comparison.second = b.place();
            return comparison;
        }
        if (itemA.kind == Kind::End) return QzXmlComparison();
    }
}
