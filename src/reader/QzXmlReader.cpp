#include "QzXmlReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <istream>
#include <string>
#include <string_view>
#include <utility>

#include "QzBoundsErr.h"
#include "QzXmlByteScan.h"
#include "QzXmlCharChecks.h"
#include "QzXmlCharInfo.h"
#include "QzXmlDoctype.h"
#include "QzXmlInputWindow.h"
#include "QzXmlMarkupLog.h"
#include "QzXmlParseError.h"
#include "QzXmlShortCopy.h"
#include "QzXmlSimd.h"
#include "QzXmlUtils.h"
#include "Qzxmsg.h"

const QzXmlName QzXmlReader::NullName;

namespace {

using Byte = unsigned char;

// The library is built for little-endian hosts only.
constexpr bool isLittleEndian = true;

const QzCString qzEncodingNames[8] = {"UTF-32BE", "UTF-32LE", "UTF-32", "UTF-32",
                                      "UTF-16BE", "UTF-16LE", "UTF-8",  "EBCDIC"};

// Byte-order marks: four bytes each, of which kBOMLengths[row] are compared and skipped.
constexpr Byte qzBOMCodes[28] = {0x00, 0x00, 0xFE, 0xFF, 0xFF, 0xFE, 0x00, 0x00, 0x00, 0x00,
                                 0xFF, 0xFE, 0xFE, 0xFF, 0x00, 0x00, 0xFE, 0xFF, 0x00, 0x00,
                                 0xFF, 0xFE, 0x00, 0x00, 0xEF, 0xBB, 0xBF, 0x00};
constexpr int kBOMLengths[7] = {4, 4, 4, 4, 2, 2, 3};

// The first four bytes of a document without a byte-order mark, row i naming encoding i.
constexpr Byte qzXMLDecls[32] = {0x00, 0x00, 0x00, 0x3C, 0x3C, 0x00, 0x00, 0x00, 0x00, 0x00, 0x3C,
                                 0x00, 0x00, 0x3C, 0x00, 0x00, 0x00, 0x3C, 0x00, 0x3F, 0x3C, 0x00,
                                 0x3F, 0x00, 0x3C, 0x3F, 0x78, 0x6D, 0x4C, 0x6F, 0xA7, 0x94};

const QzCString kExpected("Expected ");
const QzCString kXmlNamespace("http://www.w3.org/XML/1998/namespace");
const QzCString kXmlnsNamespace("http://www.w3.org/2000/xmlns/");
const QzCString kFound(", found ");

// Byte tables for the scanning loops: one lookup per byte instead of a chain of compares.
struct ByteTable {
    bool stop[256] = {};
    constexpr explicit ByteTable(const char* bytes) {
        for (; *bytes; ++bytes)
            stop[static_cast<Byte>(*bytes)] = true;
    }
    bool operator[](Byte b) const { return stop[b]; }
};

constexpr ByteTable kWhitespace(" \t\n\r");
constexpr ByteTable kQuote("\"'");
// ASCII bytes that may start or continue a name, as the character table classes them.
constexpr ByteTable kAsciiNameStart(":ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
constexpr ByteTable kAsciiNameByte(
    "-.0123456789:ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");

// Whether the length bytes at a and b are the same: names are short, and a call into the C
// library costs more than comparing them here.
inline bool sameBytes(const char* a, const char* b, std::size_t length) {
    for (; length >= 8; a += 8, b += 8, length -= 8) {
        std::uint64_t x, y;
        std::memcpy(&x, a, 8);
        std::memcpy(&y, b, 8);
        if (x != y) return false;
    }
    for (; length > 0; --length) {
        if (*a++ != *b++) return false;
    }
    return true;
}

// Value of a hexadecimal digit, -1 for anything else, as the strict reader reads them.
constexpr int strictHexDigit(Byte b) {
    if (b >= '0' && b <= '9') return b - '0';
    const int lower = b | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// Value of a hexadecimal digit of a character reference, -1 for anything else. Lower-case
// "f" is not a digit here, on purpose.
constexpr int hexDigit(Byte b) {
    if (b >= '0' && b <= '9') return b - '0';
    if (b >= 'A' && b <= 'F') return b - 'A' + 10;
    if (b >= 'a' && b <= 'e') return b - 'a' + 10;
    return -1;
}

Byte* skipUntil(Byte* p, const Byte* limit, const ByteTable& table) {
    while (p < limit && !table[*p])
        ++p;
    return p;
}

// Three stop bytes for a scan, also as a table for the byte-at-a-time tail.
struct StopBytes {
    QzXmlByteScan<3> scan;
    ByteTable table;
    constexpr explicit StopBytes(const char (&three)[4]) : scan(three), table(three) {}
};

constexpr StopBytes kContentStop("<&\r");
constexpr StopBytes kDoubleQuotedStop("<&\"");
constexpr StopBytes kSingleQuotedStop("<&'");

// The first stop byte from p on, or limit: sixteen bytes a step where the processor allows,
// since texts and values are mostly long runs.
[[gnu::always_inline]] inline Byte* findStop(Byte* p, const Byte* limit, const StopBytes& stops) {
    if (Byte* stop = stops.scan.find(p, limit)) return stop;
    return skipUntil(p, limit, stops.table);
}

// UTF-8 of a character reference or of a character in a message. The four-byte form always
// leads with 0xF0: bits above 17 are dropped on purpose.
void appendUtf8(QzCString& out, std::uint64_t v) {
    char bytes[4];
    int n;
    if (v < 0x80) {
        bytes[0] = static_cast<char>(v);
        n = 1;
    } else if (v < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | (v >> 6));
        bytes[1] = static_cast<char>(0x80 | (v & 0x3F));
        n = 2;
    } else if (v < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | (v >> 12));
        bytes[1] = static_cast<char>(0x80 | ((v >> 6) & 0x3F));
        bytes[2] = static_cast<char>(0x80 | (v & 0x3F));
        n = 3;
    } else {
        bytes[0] = static_cast<char>(0xF0);
        bytes[1] = static_cast<char>(0x80 | ((v >> 12) & 0x3F));
        bytes[2] = static_cast<char>(0x80 | ((v >> 6) & 0x3F));
        bytes[3] = static_cast<char>(0x80 | (v & 0x3F));
        n = 4;
    }
    out.append(bytes, n);
}

std::uint16_t unitAt(const Byte* p) {
    std::uint16_t u;
    std::memcpy(&u, p, sizeof u);
    return u;
}

// UTF-8 of the native-order 16-bit units that start at first and end before last; a trailing
// odd byte is ignored and unpaired surrogates come out as three-byte sequences.
QzCString toUtf8(const Byte* first, const Byte* last) {
    std::string out;
    if (last <= first) return QzCString(std::move(out));
    out.reserve(last - first);
    QzXmlCharChecks::appendUtf16(
        out, (last - first) / 2, [first](std::size_t i) { return unitAt(first + 2 * i); }, true);
    return QzCString(std::move(out));
}

bool equals(const QzCString& text, const char* literal) {
    const std::size_t n = std::strlen(literal);
    return text.length() == n && std::memcmp(text.data(), literal, n) == 0;
}

// Depth counts wrap instead of overflowing on absurdly long inputs.
std::int32_t wrapAdd(std::int32_t value, std::int32_t delta) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) +
                                     static_cast<std::uint32_t>(delta));
}

const char* chars(const Byte* p) {
    return reinterpret_cast<const char*>(p);
}

// Appends the character of one of the five predefined entities named by [name, name+length);
// whether it was one.
[[gnu::always_inline]] inline bool appendPredefined(QzCString& out, const Byte* name,
                                                    std::size_t length) {
    char text = 0;
    if (length == 2 && name[1] == 't') {
        text = name[0] == 'l' ? '<' : name[0] == 'g' ? '>' : 0;
    } else if (length == 3) {
        text = std::memcmp(name, "amp", 3) == 0 ? '&' : 0;
    } else if (length == 4) {
        text = std::memcmp(name, "apos", 4) == 0   ? '\''
               : std::memcmp(name, "quot", 4) == 0 ? '"'
                                                   : 0;
    }
    if (text == 0) return false;
    out += text;
    return true;
}

// Byte-wise order with the shorter string first on a tie, as QzCString::compareTo.
int compareBytes(const char* a, std::size_t aLength, const char* b, std::size_t bLength) {
    // Names mostly differ in their first byte.
    if (aLength != 0 && bLength != 0 && *a != *b)
        return static_cast<unsigned char>(*a) < static_cast<unsigned char>(*b) ? -1 : 1;
    const int r = std::memcmp(a, b, std::min(aLength, bLength));
    if (r != 0) return r;
    return aLength < bLength ? -1 : aLength > bLength ? 1 : 0;
}

// Names and values mostly repeat those of the tag before, or fit in its room: both spare the
// general assignment, which costs several times the copy of a short name.
[[gnu::always_inline]] inline void setBytes(QzCString& target, const char* bytes,
                                            std::size_t length) {
    const std::size_t old = target.length();
    if (old == length) {
        // The bytes may be the target's own.
        QzXmlShortCopy::copy(target.data(), bytes, length);
    } else if (length > target.capacity()) {
        target.assign(bytes, length);
    } else if (length < old) {
        // The bytes may be a part of the target itself, or none at all (an empty view).
        if (length != 0) std::memmove(target.data(), bytes, length);
        target.resize(length);
    } else {
        std::memcpy(target.data(), bytes, old);
        target.append(bytes + old, length - old);
    }
}

[[gnu::always_inline]] inline void setBytes(QzCString& target, const QzCString& source) {
    setBytes(target, source.data(), source.length());
}

[[gnu::always_inline]] inline void setBytes(QzCString& target, std::string_view source) {
    setBytes(target, source.data(), source.size());
}

std::string_view viewOf(const QzCString& text) {
    return std::string_view(text.data(), text.length());
}

// Copies strings one after another into a store reserved for them all, so that the views of
// the copies stay valid as more are made.
class StoreWriter {
public:
    StoreWriter(std::vector<char>& store, std::size_t size) : store_(store) {
        store_.clear();
        store_.reserve(size);
    }
    std::string_view copy(std::string_view text) {
        const std::size_t at = store_.size();
        store_.insert(store_.end(), text.begin(), text.end());
        return std::string_view(store_.data() + at, text.size());
    }

private:
    std::vector<char>& store_;
};

// Up to the first eight bytes as a big-endian number, zeros after the end: since names hold no
// zero byte, numbers order as the names do, and only equal numbers need the full comparison.
std::uint64_t leadingBytes(const char* text, std::size_t length) {
    std::uint64_t head = 0;
    for (std::size_t i = 0; i < 8; ++i)
        head = head << 8 | (i < length ? static_cast<Byte>(text[i]) : 0u);
    return head;
}

// Names are short: a plain loop beats a call to memchr.
const char* findColon(const char* first, const char* last) {
    while (first != last && *first != ':')
        ++first;
    return first;
}

// The same for a name of the buffer that ends at end: sixteen bytes looked at in one go when
// the name is no longer and the buffer holds them (the shortest names go quicker byte by byte).
const char* findColon(const char* first, const char* last, const Byte* end) {
#ifdef QZXML_SSE2
    if (last - first > 4 && last - first <= 16 &&
        reinterpret_cast<const char*>(end) - first >= 16) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first));
        const unsigned colons =
            static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(':')))) &
            ((1u << (last - first)) - 1);
        return colons != 0 ? first + __builtin_ctz(colons) : last;
    }
#else
    static_cast<void>(end);
#endif
    return findColon(first, last);
}

bool isXmlns(const char* text, std::size_t length) {
    return length == 5 && std::memcmp(text, "xmlns", 5) == 0;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Construction and lexical primitives

namespace {

// Bytes a read must leave after it in the window to count as done: more than any look-ahead
// of the scanners past the node they read ("<![CDATA[" after a text is the longest). A tag
// needs none: it ends at its ">", and nothing after it is looked at.
constexpr std::ptrdiff_t kLookAhead = 16;

bool isTag(std::int32_t nodeType) {
    return nodeType == QzXmlReader::StartTag || nodeType == QzXmlReader::EndTag ||
           nodeType == QzXmlReader::EmptyElement;
}

}  // namespace

QzXmlReader::QzXmlReader(std::istream& input) : QzXmlReader(input, QzXmlReaderOptions()) {}

QzXmlReader::QzXmlReader(const QzCString& document)
    : QzXmlReader(document, QzXmlReaderOptions(), nullptr) {}

QzXmlReader::QzXmlReader(unsigned char* buffer, unsigned long length)
    : QzXmlReader(buffer, length, QzXmlReaderOptions()) {}

QzXmlReader::QzXmlReader(std::istream& input, const QzXmlReaderOptions& options)
    : window_(std::make_unique<QzXmlInputWindow>(input, options.chunkSize)),
      topUpAt_(std::max<std::ptrdiff_t>(
          2 * kLookAhead,
          static_cast<std::ptrdiff_t>(std::min<std::size_t>(options.chunkSize, 1 << 30)))) {
    applyOptions(options);
    // A document past the length limit is read no further than the byte that breaks it.
    if (maxDocumentLength_ != SIZE_MAX) window_->limitInput(maxDocumentLength_ + 1);
    startDocument();
}

QzXmlReader::QzXmlReader(std::unique_ptr<QzXmlInputWindow> window,
                         const QzXmlReaderOptions& options)
    : window_(std::move(window)) {
    applyOptions(options);
}

void QzXmlReader::startDocument() {
    if (cursor_ == nullptr) {
        documentBuffer_ = cursor_ = window_->begin();
        limit_ = window_->end();
    }
    takeInitialInput();
    throughWindow([this] {
        readDocument();
        return true;
    });
}

QzXmlReader::QzXmlReader(const QzCString& document, const QzXmlReaderOptions& options)
    : QzXmlReader(document, options, nullptr) {}

QzXmlReader::QzXmlReader(const QzCString& document, const QzXmlReaderOptions& options,
                         QzXmlMarkupLog* log)
    : ownedText_(document), markupLog_(log) {
    applyOptions(options);
    adoptOwnedText();
    readDocument();
}

QzXmlReader::QzXmlReader(unsigned char* buffer, unsigned long length,
                         const QzXmlReaderOptions& options)
    : cursor_(buffer), documentBuffer_(buffer), limit_(buffer + length) {
    applyOptions(options);
    readDocument();
}

QzXmlReader::~QzXmlReader() {
    leaveSpares();
}

// What a reader leaves to the next one in its thread: the namespace scopes and the scratch
// of tags and text, with their storage, so that reading many small documents one after
// another allocates nothing once the first is read.
struct QzXmlReader::Spares {
    QzXmlNamespaceStack namespaces;
    std::vector<StagedAttribute> staged;
    std::vector<SortKey> order;
    std::vector<QzXmlAttributeView> attributeViews;
    std::vector<std::string_view> openNames;
    QzCString value;
    QzCString expandedValues;
    QzCString documentCopy;  ///< for a document whose line ends a strict reader rewrites
};

std::unique_ptr<QzXmlReader::Spares>& QzXmlReader::threadSpares() {
    thread_local std::unique_ptr<Spares> spares;
    return spares;
}

void QzXmlReader::trade(Spares& spares) noexcept {
    namespaceStack_.swap(spares.namespaces);
    staged_.swap(spares.staged);
    order_.swap(spares.order);
    view_.attributes_.swap(spares.attributeViews);
    openNames_.swap(spares.openNames);
    std::swap(value_, spares.value);
    std::swap(expandedValues_, spares.expandedValues);
    // A reader constructed from a string holds its copy of the document already.
    if (ownedText_.empty()) std::swap(ownedText_, spares.documentCopy);
}

void QzXmlReader::takeSpares() noexcept {
    if (Spares* spares = threadSpares().get()) trade(*spares);
}

// Storage grown past everyday sizes by an unusual document is let go rather than kept.
void QzXmlReader::leaveSpares() noexcept {
    constexpr std::size_t kKeptAttributes = 1024;
    constexpr std::size_t kKeptBytes = 256 * 1024;
    if (staged_.capacity() > kKeptAttributes || openNames_.capacity() > kKeptAttributes ||
        value_.capacity() > kKeptBytes || expandedValues_.capacity() > kKeptBytes ||
        ownedText_.capacity() > kKeptBytes) {
        return;
    }
    try {
        namespaceStack_.closeAll();
        if (namespaceStack_.spareDeclarationCount() > kKeptAttributes) return;
        std::unique_ptr<Spares>& spares = threadSpares();
        if (!spares) spares = std::make_unique<Spares>();
        staged_.clear();
        order_.clear();
        view_.attributeCount_ = 0;
        openNames_.clear();
        value_.resize(0);
        expandedValues_.resize(0);
        ownedText_.resize(0);
        trade(*spares);
    } catch (...) {
        // Nothing is left to the next reader, which then starts afresh.
    }
}

void QzXmlReader::adoptOwnedText() {
    documentBuffer_ = cursor_ = reinterpret_cast<Byte*>(ownedText_.data());
    limit_ = documentBuffer_ + ownedText_.length();
    ownsBuffer_ = true;
}

// Every constructor starts here, so the storage left by the thread's last reader is taken too.
void QzXmlReader::applyOptions(const QzXmlReaderOptions& options) {
    takeSpares();
    // Limits left to the mode, and those set to 0, are "none": the largest value.
    const auto limit = [&options](std::size_t value, std::size_t strictDefault) {
        const std::size_t effective = options.effective(value, strictDefault);
        return effective == 0 ? SIZE_MAX : effective;
    };
    strict_ = options.strict;
    prohibitDoctype_ = options.doctype == QzXmlReaderOptions::Doctype::Prohibit;
    maxDepth_ =
        static_cast<std::int64_t>(std::min<std::size_t>(limit(options.maxDepth, 256), INT64_MAX));
    maxAttributes_ = limit(options.maxAttributes, 512);
    maxNameLength_ = limit(options.maxNameLength, 50000);
    maxTextLength_ = limit(options.maxTextLength, 10000000);
    maxDocumentLength_ = limit(options.maxDocumentLength, 0);
    checked_ = strict_ || maxDepth_ != INT64_MAX || maxAttributes_ != SIZE_MAX ||
               maxNameLength_ != SIZE_MAX || maxTextLength_ != SIZE_MAX;
    maxEntityDepth_ = limit(options.maxEntityDepth, 40);
    maxEntityAmplification_ = limit(options.maxEntityAmplification, 100);
    entityAmplificationThreshold_ = limit(options.entityAmplificationThreshold, 8 << 20);
    rejectExternalEntities_ = options.rejectExternalEntities;
}

void QzXmlReader::readDocument() {
    saveProlog();
    // The scope an element closes outlives it by one node: its view may name its URIs.
    namespaceStack_.keepClosedScope();
    namespaceStack_.pushScope();
    documentLength_ = window_ ? window_->bytesIn() : limit_ - cursor_;
    if (!window_ && documentLength_ > maxDocumentLength_) {
        errLimit(cursor_ + maxDocumentLength_, "The document", "maxDocumentLength",
                 maxDocumentLength_);
    }
    if (!strict_) {
        readProlog();
        return;
    }
    // The xml prefix is bound without a declaration.
    bindXmlPrefix();
    readStrictProlog();
}

// ---------------------------------------------------------------------------------------------
// Reading through a window
//
// A streaming or fed reader reads each node as the in-memory reader does, over the window's
// bytes. A node the window does not hold whole ends in an error or near the window's end:
// then everything the read changed is put back, more input is taken in, and the node is
// read again. Once the input has all come, reading is exactly the in-memory reading.

// The first bytes: enough to see a byte-order mark and the declaration's start.
void QzXmlReader::takeInitialInput() {
    while (window_->end() - window_->begin() < kLookAhead && pullOnce()) {
    }
    if (!window_->error().empty()) failOnWindowError();
    if (!window_->exhausted() && limit_ - cursor_ < kLookAhead) throw NeedInput();
}

template <class Read>
bool QzXmlReader::throughWindow(Read read) {
    // Most reads start outside entities, a chunk ahead, with no try pending.
    if (!frames_.empty() || triedAhead_ >= 0 || limit_ - cursor_ < topUpAt_) prepareRead();
    for (;;) {
        if (window_->exhausted()) return read();
        markState();
        try {
            lookAheadNeeded_ = kLookAhead;
            const bool answer = read();
            if (ahead() >= lookAheadNeeded_) {
                triedAhead_ = -1;
                return answer;
            }
            failedWith_.clear();
        } catch (const Qzxmsg& e) {
            // An error that more input does not change stands: a broken document is not read
            // to its end before it is reported.
            if (errorRepeated(e)) throw;
        }
        restoreState();
        triedAhead_ = ahead();
        pullMore(retryAhead());
    }
}

void QzXmlReader::prepareRead() {
    if (ahead() < topUpAt_) topUp();
    // A read that ran out is tried again only once the input ahead has doubled, so that
    // input fed a byte at a time costs no more than reading it whole.
    if (triedAhead_ >= 0 && ahead() < retryAhead()) pullMore(retryAhead());
}

// Whether the error a read just raised is the one the whole input gives: the try before it
// raised the same error in the same place with less input ahead, the place lies inside the
// root element away from the window's end, and it is not one that more input could change.
// Errors of the prolog, whose declarations are read by many small scans, wait for the input
// as before. Where input to come may yet fail to decode, that failure, which the in-memory
// reader meets first, is waited for.
bool QzXmlReader::errorRepeated(const Qzxmsg& error) {
    std::string seen = error.why();
    if (const auto* parse = dynamic_cast<const QzXmlParseError*>(&error))
        seen += ' ' + std::to_string(parse->getLine()) + ':' + std::to_string(parse->getColumn());
    const bool repeated = triedAhead_ >= 0 && seen == failedWith_ && !errorUnsettled_ &&
                          depth_ > 0 && frames_.empty() && limit_ - cursor_ > kLookAhead &&
                          !window_->mayRefuse();
    errorUnsettled_ = false;
    failedWith_ = std::move(seen);
    return repeated;
}

// The reads a window makes, kept out of the in-memory reader's way.
[[gnu::noinline]] bool QzXmlReader::eofThroughWindow() {
    return throughWindow([this] { return eofNow(); });
}

[[gnu::noinline]] void QzXmlReader::readNextNodeThroughWindow() {
    throughWindow([this] {
        checked_ ? readNextNodeAs<true>() : readNextNodeAs<false>();
        lookAheadNeeded_ = lookAheadAfterNode();
        return true;
    });
}

[[gnu::noinline]] void QzXmlReader::readContentThroughWindow() {
    throughWindow([this] {
        checked_ ? readContentAs<true>() : readContentAs<false>();
        lookAheadNeeded_ = lookAheadAfterNode();
        return true;
    });
}

// What a node just read must leave ahead in the window: nothing after a tag, which ends at
// its ">"; after a text, the byte after its "<", which tells a tag from markup merged into
// the text, or more when that is markup.
std::ptrdiff_t QzXmlReader::lookAheadAfterNode() const {
    if (isTag(nodeType_)) return 0;
    const bool tagNext = frames_.empty() && nodeType_ == Content && limit_ - cursor_ >= 2 &&
                         cursor_[0] == '<' && cursor_[1] != '!' && cursor_[1] != '?';
    return tagNext ? 2 : kLookAhead;
}

// What a read that ran out waits for: as much again ahead as it had.
std::ptrdiff_t QzXmlReader::retryAhead() const {
    return 2 * triedAhead_ + kLookAhead;
}

// Bytes the window holds past the document's cursor.
std::ptrdiff_t QzXmlReader::ahead() const {
    return frames_.empty() ? limit_ - cursor_ : frames_.front().limit - frames_.front().cursor;
}

// Before a read: the bytes read are let go, and a chunk is held ahead where the input has
// it, so that most nodes are read at the first try.
void QzXmlReader::topUp() {
    releaseConsumed();
    while (!window_->exhausted() && ahead() < topUpAt_ && pullOnce()) {
    }
    if (!window_->error().empty()) failOnWindowError();
}

// Input until wanted bytes lie ahead or it has all come; a fed reader whose input runs out
// first throws NeedInput.
void QzXmlReader::pullMore(std::ptrdiff_t wanted) {
    while (!window_->exhausted() && ahead() < wanted && pullOnce()) {
    }
    if (!window_->error().empty()) failOnWindowError();
    if (window_->exhausted() || ahead() >= wanted || mayHaveEnded()) return;
    throw NeedInput();
}

// Whether fed input that came since the last try may end the node that ran out: a small node
// is tried again as soon as a ">" (after markup) or "<" (after text) comes, not only once
// the input ahead has doubled.
bool QzXmlReader::mayHaveEnded() const {
    constexpr std::ptrdiff_t kSmallNode = 4096;
    if (triedAhead_ >= kSmallNode || ahead() <= triedAhead_) return false;
    const Byte* cursor = frames_.empty() ? cursor_ : frames_.front().cursor;
    const Byte* fresh = cursor + triedAhead_;
    const int end = *cursor == '<' ? '>' : '<';
    return std::memchr(fresh, end, ahead() - triedAhead_) != nullptr;
}

// One pull, the pointers into the window moved along; the document length limit is checked
// as the input comes.
bool QzXmlReader::pullOnce() {
    // The window may move as it grows.
    detachView();
    const Byte* oldBegin = window_->begin();
    const Byte* oldEnd = window_->end();
    const bool pulled = window_->pull();
    moveWindowPointers(oldBegin, oldEnd, window_->begin());
    documentLength_ = window_->bytesIn();
    if (documentLength_ > maxDocumentLength_) {
        const std::uint64_t before = documentLength_ - (window_->end() - window_->begin());
        errLimit(window_->begin() +
                     (maxDocumentLength_ - std::min<std::uint64_t>(before, maxDocumentLength_)),
                 "The document", "maxDocumentLength", maxDocumentLength_);
    }
    return pulled;
}

// Every pointer into the window's old span [oldBegin, oldEnd] follows its byte to newBegin;
// the document's end becomes the window's end.
void QzXmlReader::moveWindowPointers(const Byte* oldBegin, const Byte* oldEnd,
                                     const Byte* newBegin) {
    const auto first = reinterpret_cast<std::uintptr_t>(oldBegin);
    const auto last = reinterpret_cast<std::uintptr_t>(oldEnd);
    const auto move = [&](auto*& p) {
        const auto at = reinterpret_cast<std::uintptr_t>(p);
        if (p != nullptr && at >= first && at <= last) {
            using Pointer = std::remove_reference_t<decltype(p)>;
            p = reinterpret_cast<Pointer>(const_cast<Byte*>(newBegin) + (at - first));
        }
    };
    Byte*& limit = frames_.empty() ? limit_ : frames_.front().limit;
    move(cursor_);
    move(documentBuffer_);
    for (InputFrame& frame : frames_) {
        move(frame.cursor);
        move(frame.buffer);
        move(frame.reference);
    }
    move(lastTagStart_);
    if (rawCopy_) {
        move(rawCopy_->start);
        move(rawCopy_->inner);
        move(rawCopy_->buffer);
    }
    for (std::string_view& name : openNames_) {
        const char* data = name.data();
        move(data);
        name = std::string_view(data, name.size());
    }
    if (!frames_.empty()) move(limit_);
    limit = window_->end();
}

// Lets go of what is read, keeping the tag read last, the reference of the entity being read
// and an element readElement is copying.
void QzXmlReader::releaseConsumed() {
    const Byte* keep = frames_.empty() ? cursor_ : frames_.front().cursor;
    const auto inWindow = [this](const Byte* p) {
        return p != nullptr && p >= window_->begin() && p <= window_->end();
    };
    if (inWindow(lastTagStart_)) keep = std::min(keep, lastTagStart_);
    // Errors inside an entity are placed at its reference.
    if (!frames_.empty()) keep = std::min(keep, frames_.front().reference);
    if (rawCopy_) {
        for (const Byte* p : {rawCopy_->start, rawCopy_->inner})
            if (inWindow(p)) keep = std::min(keep, p);
    }
    // Not worth moving the bytes for less than half of what is held.
    if (keep - window_->begin() < (window_->end() - window_->begin()) / 2) return;
    detachOpenNames();
    detachView();
    const Byte* oldBegin = window_->begin();
    const Byte* oldEnd = window_->end();
    window_->release(keep);
    // The kept bytes now start the window: everything from keep on moves down by dropped.
    moveWindowPointers(keep, oldEnd, window_->begin());
    if (documentBuffer_ == oldBegin || documentBuffer_ < keep) documentBuffer_ = window_->begin();
    if (!frames_.empty()) frames_.front().buffer = window_->begin();
    if (lastTagStart_ != nullptr && lastTagStart_ >= oldBegin && lastTagStart_ < keep)
        lastTagStart_ = nullptr;
}

// The names of open elements whose tags are about to leave the window are copied out.
void QzXmlReader::detachOpenNames() {
    if (!detachedNames_) detachedNames_ = std::make_unique<std::deque<std::string>>();
    std::deque<std::string>& detached = *detachedNames_;
    if (detached.size() < openNames_.size()) detached.resize(openNames_.size());
    for (std::size_t i = 0; i < openNames_.size(); ++i) {
        const auto* data = reinterpret_cast<const Byte*>(openNames_[i].data());
        if (data < window_->begin() || data > window_->end()) continue;
        detached[i].assign(openNames_[i]);
        openNames_[i] = detached[i];
    }
}

[[noreturn]] void QzXmlReader::failOnWindowError() {
    const Byte* at = window_->begin() + std::min<std::size_t>(window_->errorOffset(),
                                                              window_->end() - window_->begin());
    errAt(at, window_->error());
}

// The fields a mark keeps, each with the reader's own: copy(kept, live) copies one way. A
// read sets the node's kind and the tag's start before it reads them, and takes a pending
// node before it starts: those need no keeping.
template <class Copy>
void QzXmlReader::eachNodeField(Copy copy) {
    StreamMark& m = mark_;
    copy(m.cursor, cursor_);
    copy(m.depth, depth_);
    copy(m.rootSeen, rootSeen_);
    copy(m.expandedLength, expandedLength_);
}

template <class Copy>
void QzXmlReader::eachPrologField(Copy copy) {
    StreamMark& m = mark_;
    copy(m.hasDoctype, hasDoctype_);
    copy(m.entitiesRelaxed, entitiesRelaxed_);
    copy(m.skippingDeclarations, skippingDeclarations_);
    copy(m.encodingDeclared, encodingDeclared_);
    copy(m.standaloneDeclared, standaloneDeclared_);
    copy(m.declarationDecoded, declarationDecoded_);
    copy(m.encodingName, encodingName_);
    copy(m.declaredVersion, declaredVersion_);
    copy(m.declaredStandalone, declaredStandalone_);
}

namespace {

const auto keep = [](auto& kept, const auto& live) { kept = live; };
const auto putBack = [](const auto& kept, auto& live) { live = kept; };

}  // namespace

void QzXmlReader::markState() {
    window_->mark();
    StreamMark& m = mark_;
    eachNodeField(keep);
    // Outside an entity, the document's buffer and end are the window's.
    if (!frames_.empty() || !m.frames.empty()) {
        m.frames = frames_;
        m.limit = limit_;
        m.buffer = documentBuffer_;
    }
    m.openNames = openNames_.size();
    if (!openNames_.empty()) m.innermostName = openNames_.back();
    // Only a tag opens or closes a scope.
    m.scopes = *cursor_ == '<' ? namespaceStack_.scopeCount() : SIZE_MAX;
    m.prologSaved = false;
}

// Called before the prolog or a declaration is read: what they set is saved as well.
void QzXmlReader::saveProlog() {
    StreamMark& m = mark_;
    if (!window_ || m.prologSaved) return;
    m.prologSaved = true;
    m.scopes = namespaceStack_.scopeCount();
    m.hadDeclarations = doctype_ != nullptr;
    eachPrologField(keep);
}

void QzXmlReader::restoreState() {
    // Rewinding may drop the scope the view's URIs lie in.
    detachView();
    StreamMark& m = mark_;
    const Byte* oldBegin = nullptr;
    const Byte* oldEnd = nullptr;
    const bool moved = window_->rewind(oldBegin, oldEnd);
    eachNodeField(putBack);
    frames_ = m.frames;
    limit_ = frames_.empty() ? window_->end() : m.limit;
    documentBuffer_ = frames_.empty() ? window_->begin() : m.buffer;
    if (openNames_.size() > m.openNames) openNames_.resize(m.openNames);
    if (openNames_.size() < m.openNames) openNames_.push_back(m.innermostName);
    if (m.scopes != SIZE_MAX) namespaceStack_.rewind(m.scopes);
    if (m.prologSaved) {
        eachPrologField(putBack);
        if (!m.hadDeclarations) doctype_.reset();
    }
    // A declaration decoded the window anew: rewinding put its bytes back elsewhere.
    if (moved) moveWindowPointers(oldBegin, oldEnd, window_->begin());
}

void QzXmlReader::transcodeWindow(const QzCString& encoding) {
    if (!window_->decodeFrom(cursor_, encoding)) failOnWindowError();
    documentBuffer_ = cursor_ = window_->begin();
    limit_ = window_->end();
}

// Records the comment or processing instruction that starts at open and was just read;
// inText places it inside the text being read, at the length value_ has reached.
void QzXmlReader::logMarkup(const Byte* open, bool inText) {
    if (markupLog_ == nullptr) return;
    markupLog_->entries.push_back({std::string(chars(open), cursor_ - open),
                                   static_cast<std::size_t>(open - documentBuffer_),
                                   inText ? value_.length() : QzXmlMarkupLog::BeforeNode});
}

// Line and column are worked out only here, never tracked while reading: only LF ends a line
// and columns count bytes.
void QzXmlReader::err(const QzCString& message) const {
    // Inside an entity's replacement text, the place is that of the reference in the document.
    const Byte* base = frames_.empty() ? documentBuffer_ : frames_.front().buffer;
    const Byte* at = frames_.empty() ? cursor_ : frames_.front().reference;
    // A window has let go of the bytes before it, but counted them.
    std::uint64_t line = 1 + (window_ ? window_->linesDropped() : 0);
    std::uint64_t column = window_ ? window_->columnCarry() : 0;
    const Byte* lineStart = base;
    for (const Byte* p = base; p < at; ++p) {
        if (*p == '\n') {
            ++line;
            lineStart = p + 1;
            column = 0;
        }
    }
    throw QzXmlParseError(
        frames_.empty() ? message : message + " (in the replacement text of an entity)",
        QzCString(), line, column + static_cast<std::uint64_t>(at - lineStart) + 1);
}

// For a scan that ran off the end: the error is reported where the scan stopped.
void QzXmlReader::prematureEof() {
    cursor_ = limit_;
    err("Premature EOF");
}

// For a look-ahead of count bytes: too few left is reported where the cursor stands, since
// nothing has been read yet.
void QzXmlReader::requireBytes(std::ptrdiff_t count) const {
    if (limit_ - cursor_ < count) err("Premature EOF");
}

QzXmlReader::Byte QzXmlReader::takeByte() {
    if (atEnd()) prematureEof();
    return *cursor_++;
}

void QzXmlReader::skipBytes(std::ptrdiff_t count) {
    requireBytes(count);
    cursor_ += count;
}

bool QzXmlReader::eof() {
    // Inside the root element with more to read, no mode has anything to check.
    if (depth_ != 0 && limit_ - cursor_ > 1) return false;
    if (window_) return eofThroughWindow();
    return eofNow();
}

bool QzXmlReader::eofNow() {
    if (strict_) return strictEof();
    if (depth_ == 0 && limit_ - cursor_ > 1) readS();
    return limit_ - cursor_ <= 1;
}

void QzXmlReader::readS() {
    while (cursor_ < limit_ && kWhitespace[*cursor_])
        ++cursor_;
}

// Decodes the UTF-8 character at the cursor and steps past it. Continuation bytes are not
// checked, and a four-byte lead contributes its bits shifted by 19.
std::uint32_t QzXmlReader::decodeCharacter() {
    const Byte b0 = *cursor_;
    const int length = b0 < 0x80                    ? 1
                       : (b0 >= 0xC2 && b0 <= 0xDF) ? 2
                       : (b0 >= 0xE0 && b0 <= 0xEF) ? 3
                                                    : 4;
    if (limit_ - cursor_ < length) err("Premature EOF inside character");
    const Byte* p = cursor_;
    cursor_ += length;
    switch (length) {
        case 1:
            return b0;
        case 2:
            return (b0 & 0x1Fu) << 6 | (p[1] & 0x3Fu);
        case 3:
            return (b0 & 0x0Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
        default:
            return (b0 & 0x07u) << 19 | (p[1] & 0x3Fu) << 12 | (p[2] & 0x3Fu) << 6 | (p[3] & 0x3Fu);
    }
}

// Only a name's first character is checked against the whole table; later characters are
// classified only when they are ASCII, so any non-ASCII character may continue a name. The
// name stays where it lies: the caller takes it from the returned start to the cursor.
const Byte* QzXmlReader::scanName() {
    return checked_ ? scanNameAs<true>() : scanNameAs<false>();
}

template <bool Checked>
const Byte* QzXmlReader::scanNameAs() {
    // ASCII names read alike in every mode; the rest, and errors, a strict reader reads its way.
    if (atEnd()) {
        if constexpr (Checked) {
            if (strict_) return scanStrictName();
        }
        prematureEof();
    }
    const Byte* start = cursor_;
    if (kAsciiNameStart[*start]) {
        Byte* p = cursor_ + 1;
        while (p < limit_ && kAsciiNameByte[*p])
            ++p;
        if (p < limit_ && *p < 0x80) {
            cursor_ = p;
            if constexpr (Checked) checkNameLength(start);
            return start;
        }
        if constexpr (Checked) {
            if (strict_) return scanStrictName();
        }
        cursor_ = p;
        return scanNameRest(start);
    }
    if constexpr (Checked) {
        if (strict_) return scanStrictName();
    }
    const std::uint32_t first = decodeCharacter();
    if (qzXmlCharClass(first) < 3) {
        QzCString message("Illegal starting character for name: ");
        appendUtf8(message, first);
        err(message);
    }
    return scanNameRest(start);
}

// The rest of a name whose first character has been read.
const Byte* QzXmlReader::scanNameRest(const Byte* start) {
    for (;;) {
        while (cursor_ < limit_ && kAsciiNameByte[*cursor_])
            ++cursor_;
        if (atEnd()) prematureEof();
        if (*cursor_ < 0x80) {
            checkNameLength(start);
            return start;
        }
        decodeCharacter();
    }
}

void QzXmlReader::readName(QzCString& name) {
    const Byte* start = scanName();
    name.assign(chars(start), cursor_ - start);
}

// ---------------------------------------------------------------------------------------------
// Input decoding

void QzXmlReader::readAndProcessBOM() {
    requireBytes(4);
    const Byte* b = cursor_;
    if ((b[0] == '<' && b[1] != 0) || kWhitespace[b[0]]) {
        encodingName_ = qzEncodingNames[6];
        return;
    }
    for (int row = 0; row < 7; ++row) {
        if (std::memcmp(b, qzBOMCodes + 4 * row, kBOMLengths[row]) == 0) {
            cursor_ += kBOMLengths[row];
            transcodeDocument(qzEncodingNames[row]);
            return;
        }
    }
    for (int row = 0; row < 8; ++row) {
        if (std::memcmp(b, qzXMLDecls + 4 * row, 4) == 0) {
            transcodeDocument(qzEncodingNames[row]);
            return;
        }
    }
    // Labelled but not converted: such a document fails at once on its first character.
    encodingName_ = qzEncodingNames[0];
}

bool QzXmlReader::transcodeDocument(const QzCString& encoding) {
    encodingName_ = encoding;
    using Decoding = QzXmlInputWindow::Decoding;
    const Decoding decoding = QzXmlInputWindow::decodingOf(encoding);
    if (decoding == Decoding::None) return false;
    saveRawCopy();
    // The text read so far is about to go.
    detachView();
    if (window_) {
        transcodeWindow(encoding);
        rebaseRawCopy();
        return true;
    }
    if (decoding == Decoding::Latin1) {
        ownedText_ = transcode8859_1();
    } else if (decoding == Decoding::Utf16BE) {
        ownedText_ = transcodeUTF16BE();
    } else if (decoding == Decoding::Utf16LE) {
        ownedText_ = transcodeUTF16LE();
    } else {
        try {
            ownedText_ = QzXmlUtils::convertCharset(QzCString(chars(cursor_), limit_ - cursor_),
                                                    encoding, QzCString("UTF-8"));
        } catch (const Qzxmsg& e) {
            err(QzCString("Couldn't transcode from input encoding '") + encoding +
                QzCString("': ") + QzCString(e.why()));
        }
    }
    // The decoded copy is ours to release, also when the input was the caller's buffer.
    adoptOwnedText();
    rebaseRawCopy();
    return true;
}

QzCString QzXmlReader::transcode8859_1() const {
    std::string out;
    out.reserve(limit_ - cursor_);
    for (const Byte* p = cursor_; p < limit_; ++p) {
        if (*p < 0x80) {
            out += static_cast<char>(*p);
        } else {
            out += static_cast<char>(0xC0 | (*p >> 6));
            out += static_cast<char>(0x80 | (*p & 0x3F));
        }
    }
    return QzCString(std::move(out));
}

// Swaps the bytes of every whole 16-bit unit from the cursor on, where they lie: sixteen
// units a round, then the rest one by one.
void QzXmlReader::swapUnitsInPlace() {
    Byte* p = cursor_;
    for (; limit_ - p >= 32; p += 32) {
        for (int i = 0; i < 32; i += 2)
            std::swap(p[i], p[i + 1]);
    }
    for (; limit_ - p >= 2; p += 2)
        std::swap(p[0], p[1]);
}

QzCString QzXmlReader::transcodeUTF16BE() {
    if (isLittleEndian) swapUnitsInPlace();
    return toUtf8(cursor_, limit_);
}

QzCString QzXmlReader::transcodeUTF16LE() {
    if (!isLittleEndian) swapUnitsInPlace();
    return toUtf8(cursor_, limit_);
}

// ---------------------------------------------------------------------------------------------
// Prolog

void QzXmlReader::readProlog() {
    readAndProcessBOM();
    for (;;) {
        readS();
        const Byte* open = cursor_;
        if (takeByte() != '<') err("First non-ws character in document wasn't '<'");
        const Byte next = takeByte();
        if (next == '!') {
            if (takeByte() == '-') {
                readComment();
                logMarkup(open, false);
            } else {
                --cursor_;
                if (prohibitDoctype_) errAt(open, "A document type declaration is prohibited here");
                readDocTypeDecl();
            }
        } else if (next == '?') {
            if (readPIOrXmlDecl()) logMarkup(open, false);
        } else {
            cursor_ -= 2;
            return;
        }
    }
}

// Answers whether it was a processing instruction rather than a declaration (which may have
// replaced the buffer).
bool QzXmlReader::readPIOrXmlDecl() {
    QzCString target;
    readName(target);
    if (equals(target, "xml")) {
        readXmlDecl();
        return false;
    }
    // "??>" ends the instruction: a "?" that is not followed by ">" leaves that byte to be
    // examined afresh.
    for (;;) {
        const void* q = std::memchr(cursor_, '?', limit_ - cursor_);
        if (q == nullptr) prematureEof();
        cursor_ = static_cast<Byte*>(const_cast<void*>(q)) + 1;
        if (atEnd()) prematureEof();
        if (*cursor_ == '>') {
            ++cursor_;
            return true;
        }
    }
}

// The declaration is read positionally: keywords by their first letter and length, "=" and
// opening quotes skipped unchecked, values ended by either quote.
void QzXmlReader::readXmlDecl() {
    saveProlog();
    readS();
    requireBytes(7);
    const bool isVersion = std::memcmp(cursor_, "version", 7) == 0;
    cursor_ += 7;
    if (!isVersion) return;
    skipToValue();
    readQuotedInto(declaredVersion_);
    for (;;) {
        readS();
        const Byte b = takeByte();
        if (b == 'e') {
            skipBytes(7);
            skipToValue();
            QzCString encoding;
            readQuotedInto(encoding);
            encodingDeclared_ = true;
            if (encoding == encodingName_) continue;
            // Text that one declaration decoded is not decoded again: alternating names such
            // as "ISO-8859-1" and "iso-8859-1" would double every non-ASCII byte each time.
            if (declarationDecoded_) {
                encodingName_ = encoding;
            } else {
                declarationDecoded_ = transcodeDocument(encoding);
            }
        } else if (b == 's') {
            skipBytes(9);
            skipToValue();
            standaloneDeclared_ = true;
            if (atEnd()) prematureEof();
            const bool yes = *cursor_ == 'y';
            declaredStandalone_ = yes ? "yes" : "no";
            skipBytes(yes ? 3 : 2);
            cursor_ = findQuote() + 1;
        } else if (b == '>') {
            return;
        }
    }
}

// Skips whitespace, the "=", whitespace and the opening quote.
void QzXmlReader::skipToValue() {
    readS();
    skipBytes(1);
    readS();
    skipBytes(1);
}

QzXmlReader::Byte* QzXmlReader::findQuote() {
    Byte* q = skipUntil(cursor_, limit_, kQuote);
    if (q == limit_) prematureEof();
    return q;
}

void QzXmlReader::readQuotedInto(QzCString& text) {
    Byte* q = findQuote();
    text.append(chars(cursor_), q - cursor_);
    cursor_ = q + 1;
}

void QzXmlReader::readComment() {
    if (takeByte() != '-') err("Syntax error on comment");
    for (;;) {
        const void* dash = std::memchr(cursor_, '-', limit_ - cursor_);
        if (dash == nullptr) prematureEof();
        cursor_ = static_cast<Byte*>(const_cast<void*>(dash)) + 1;
        if (takeByte() == '-') break;
    }
    if (takeByte() != '>') err("Invalid -- inside comment");
}

// Quotes are not recognised: brackets and ">" count wherever they stand.
void QzXmlReader::readDocTypeDecl() {
    QzCString name;
    readName(name);
    if (!equals(name, "DOCTYPE")) err("Unknown prolog tag");
    std::int64_t brackets = 0;
    for (;;) {
        const Byte b = takeByte();
        if (b == '[') {
            ++brackets;
        } else if (b == ']') {
            --brackets;
        } else if (b == '>' && brackets == 0) {
            return;
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Tags, attributes and namespaces

template <bool Checked>
void QzXmlReader::readTagAs() {
    if (atEnd()) prematureEof();
    if (*cursor_ == '/') {
        readEndTagAs<Checked>();
        return;
    }
    if constexpr (Checked) {
        if (depth_ >= maxDepth_) errLimit(cursor_ - 1, "Element nesting", "maxDepth", maxDepth_);
    }
    const Byte* name = scanNameAs<Checked>();
    const Byte* nameEnd = cursor_;
    if constexpr (Checked) tagName_ = std::string_view(chars(name), nameEnd - name);
    namespaceStack_.pushScope();
    try {
        readTagBodyAs<Checked>();
        if constexpr (Checked) {
            if (strict_) checkStrictTag(name, nameEnd);
        }
    } catch (...) {
        // A tag that fails leaves no attributes behind, as if none had been read.
        view_.attributeCount_ = 0;
        attributesChanged();
        throw;
    }
    viewName(name, nameEnd);
    if constexpr (Checked) {
        if (strict_) checkElementPrefix(name, nameEnd);
    }
    if (nodeType_ == EmptyElement) namespaceStack_.popScope();
}

// Reads the attributes and the closing ">" or "/>", and files the attributes.
template <bool Checked>
void QzXmlReader::readTagBodyAs() {
    view_.attributeCount_ = 0;
    attributesInScope_ = false;
    staged_.clear();
    expandedValues_.resize(0);
    for (;;) {
        [[maybe_unused]] const Byte* spaced = cursor_;
        readS();
        const Byte b = takeByte();
        if (b == '>') {
            depth_ = wrapAdd(depth_, 1);
            nodeType_ = StartTag;
            break;
        }
        if (b == '/') {
            nodeType_ = EmptyElement;
            if (takeByte() != '>') err("Invalid '/' found in tag");
            break;
        }
        --cursor_;
        if constexpr (Checked) {
            if (strict_ && spaced == cursor_)
                errExpected(cursor_, "whitespace before an attribute");
        }
        readAttributeAs<Checked>();
    }
    if constexpr (Checked) {
        if (doctype_) applyDeclaredAttributes();
    }
    commitAttributes();
}

// The name is resolved before the element's scope is popped; the message names "/" whatever
// byte was found, on purpose.
template <bool Checked>
void QzXmlReader::readEndTagAs() {
    ++cursor_;
    depth_ = wrapAdd(depth_, -1);
    nodeType_ = EndTag;
    const Byte* name = Checked && strict_ ? scanStrictEndTagName() : scanNameAs<Checked>();
    viewName(name, cursor_);
    readS();
    // The attributes of the tag read last may name URIs of the scope that goes.
    if (attributesInScope_ && namespaceStack_.closingDropsDeclarations()) detachView();
    namespaceStack_.popScope();
    if constexpr (Checked) {
        if (strict_ && (atEnd() || *cursor_ != '>')) errExpected(cursor_, "'>' to end the end tag");
    }
    if (takeByte() != '>') err("Unexpected character /");
}

template <bool Checked>
void QzXmlReader::readAttributeAs() {
    StagedAttribute attribute{};
    attribute.name = scanNameAs<Checked>();
    attribute.nameLength = cursor_ - attribute.name;
    const char* name = chars(attribute.name);
    const char* colon = findColon(name, name + attribute.nameLength, limit_);
    if (colon != name + attribute.nameLength) attribute.localStart = colon - name + 1;
    if constexpr (Checked) {
        if (staged_.size() >= maxAttributes_) {
            errLimit(attribute.name, "The number of attributes", "maxAttributes", maxAttributes_);
        }
    }
    readS();
    if (atEnd() || *cursor_ != '=') {
        if constexpr (Checked) {
            if (strict_) errExpected(cursor_, "'=' after the attribute name");
        }
    }
    if (takeByte() != '=') err("Invalid character in attribute definition");
    readS();
    if (atEnd() || (*cursor_ != '"' && *cursor_ != '\'')) {
        if constexpr (Checked) {
            if (strict_) errExpected(cursor_, "a quoted attribute value");
        }
    }
    const Byte quote = takeByte();
    if (quote != '"' && quote != '\'') err("invalid character in attribute definition");
    if constexpr (Checked) {
        if (strict_) {
            readStrictAttributeValue(quote, attribute);
        } else {
            readAttributeValue(quote, attribute);
        }
        checkTextLength(attribute.name, attribute.valueLength);
    } else {
        readAttributeValue(quote, attribute);
    }
    staged_.push_back(attribute);
}

// A value that runs straight to its quote stays where it lies, without a copy; whether it did.
bool QzXmlReader::takeValueInPlace(Byte* stop, Byte quote, StagedAttribute& attribute) {
    if (stop >= limit_ || *stop != quote) return false;
    attribute.value = cursor_;
    attribute.valueLength = stop - cursor_;
    cursor_ = stop + 1;
    return true;
}

// Values are not normalised: line breaks, tabs and carriage returns are kept as they are. A
// value without references is left in the document; one with them is built in
// expandedValues_.
void QzXmlReader::readAttributeValue(Byte quote, StagedAttribute& attribute) {
    const StopBytes& stops = quote == '"' ? kDoubleQuotedStop : kSingleQuotedStop;
    Byte* stop = findStop(cursor_, limit_, stops);
    if (takeValueInPlace(stop, quote, attribute)) return;
    attribute.valueStart = expandedValues_.length();
    for (;;) {
        expandedValues_.append(chars(cursor_), stop - cursor_);
        cursor_ = stop;
        const Byte b = takeByte();
        if (b == quote) break;
        if (b == '<') err("Syntax error: unterminated attribute value");
        if (b == '&' && expandReferences_) {
            appendReference(expandedValues_);
        } else {
            expandedValues_ += static_cast<char>(b);
        }
        stop = findStop(cursor_, limit_, stops);
    }
    attribute.valueLength = expandedValues_.length() - attribute.valueStart;
}

// Files the staged attributes as one-by-one adds to the set would, in n log n: sorted by name,
// a repeated name keeps its first spelling and its last value. Until the tag is complete a
// prefixed name's URI is its prefix text, and a default-namespace declaration's its value;
// the filed names then get their real URIs without being re-sorted.
void QzXmlReader::commitAttributes() {
    std::size_t declarations = 0;
    for (StagedAttribute& a : staged_) {
        a.valueText = a.value ? chars(a.value) : expandedValues_.data() + a.valueStart;
        a.sortURI = chars(a.name);
        a.sortURILength = a.localStart != 0 ? a.localStart - 1 : 0;
        if (!declares(a)) continue;
        ++declarations;
        if (a.localStart == 0) {
            a.sortURI = a.valueText;
            a.sortURILength = a.valueLength;
        }
    }
    if (declarations != 0) declareNamespaces(declarations);
    sortAttributes();
    // Equal names sit side by side in document order: the first gives the name, the last the
    // value.
    const std::size_t count = staged_.size();
    std::vector<QzXmlAttributeView>& views = view_.attributes_;
    if (views.size() < count) views.resize(count);
    // A caller holding the owned set has each attribute filed as soon as it is viewed.
    std::vector<QzXmlAttribute>* filed =
        attributesShared_ ? &currentAttributes_.attributes_ : nullptr;
    if (filed) filed->resize(count);
    std::size_t kept = 0;
    for (std::size_t first = 0, last; first < count; first = last, ++kept) {
        const StagedAttribute& name = staged_[order_[first].index];
        for (last = first + 1;
             last < count && compareNames(name, staged_[order_[last].index]) == 0;)
            ++last;
        viewAttribute(views[kept], name, staged_[order_[last - 1].index]);
        if (filed) fileAttribute((*filed)[kept], views[kept]);
    }
    view_.attributeCount_ = kept;
    if (filed) filed->resize(kept);
    attributesPending_ = filed == nullptr;
}

// "xmlns" declares the default namespace, "xmlns:p" the prefix p; the first byte turns most
// attributes away.
bool QzXmlReader::declares(const StagedAttribute& a) {
    return *a.name == 'x' &&
           isXmlns(chars(a.name), a.localStart != 0 ? a.localStart - 1 : a.nameLength);
}

// Into the document's scope, with the storage of a declaration closed before.
void QzXmlReader::bindXmlPrefix() {
    std::vector<QzXmlNamespace>& scope = namespaceStack_.innermostWithRoom(1);
    QzXmlNamespace& ns = scope.emplace_back(namespaceStack_.spareDeclaration());
    setBytes(ns.prefix_, "xml", 3);
    setBytes(ns.uri_, kXmlNamespace);
    namespaceStack_.indexFrom(scope.size() - 1);
}

// A tag's declarations take effect together, in document order, before any of its names is
// resolved; they go straight into the tag's scope.
void QzXmlReader::declareNamespaces(std::size_t count) {
    std::vector<QzXmlNamespace>& scope = namespaceStack_.innermostWithRoom(count);
    const std::size_t first = scope.size();
    try {
        for (const StagedAttribute& a : staged_) {
            if (!declares(a)) continue;
            QzXmlNamespace& ns = scope.emplace_back(namespaceStack_.spareDeclaration());
            const std::size_t prefixLength = a.localStart != 0 ? a.nameLength - a.localStart : 0;
            setBytes(ns.prefix_, chars(a.name) + a.localStart, prefixLength);
            setBytes(ns.uri_, a.valueText, a.valueLength);
        }
    } catch (...) {
        scope.erase(scope.begin() + static_cast<std::ptrdiff_t>(first), scope.end());
        throw;
    }
    namespaceStack_.indexFrom(first);
}

// Local name first, then the URI the attribute sorts by.
int QzXmlReader::compareNames(const StagedAttribute& a, const StagedAttribute& b) {
    const int c = compareBytes(chars(a.name) + a.localStart, a.nameLength - a.localStart,
                               chars(b.name) + b.localStart, b.nameLength - b.localStart);
    return c != 0 ? c : compareBytes(a.sortURI, a.sortURILength, b.sortURI, b.sortURILength);
}

// Leaves in order_ the positions of the staged attributes by name, equal names in document
// order. Tags mostly come sorted already or nearly, and are short.
void QzXmlReader::sortAttributes() {
    const std::size_t count = staged_.size();
    // Kept at the largest tag's size: only the first count keys are this tag's.
    if (order_.size() < count) order_.resize(count);
    for (std::uint32_t i = 0; i < count; ++i)
        order_[i] = {0, i};
    std::size_t i = 1;
    while (i < count && compareNames(staged_[i - 1], staged_[i]) <= 0)
        ++i;
    if (i >= count) return;
    if (count <= ShortTag) {
        insertFrom(i, count);
        return;
    }
    if (count > ShortRun) {
        sortRuns(count);
        return;
    }
    loadHeads(Run{0, count, 0});
    sortByComparison(0, count);
}

// Most tags hold a few attributes: an insertion sort of the keys after the first that are in
// order, compared by name alone, costs less than working out heads. Stable: a key moves only
// past greater names.
void QzXmlReader::insertFrom(std::size_t sorted, std::size_t count) {
    for (std::size_t k = sorted; k < count; ++k) {
        const SortKey key = order_[k];
        const StagedAttribute& a = staged_[key.index];
        std::size_t j = k;
        for (; j > 0 && compareNames(staged_[order_[j - 1].index], a) > 0; --j)
            order_[j] = order_[j - 1];
        order_[j] = key;
    }
}

// A huge tag is sorted in time linear in its names' bytes, whatever their order: a run of
// keys gets the next eight bytes of its local names as heads and is radix sorted by them,
// which leaves runs of equal heads to sort in turn, eight bytes further in. Short runs, and
// runs of local names equal to the end, are sorted by comparison.
void QzXmlReader::sortRuns(std::size_t count) {
    std::vector<Run>& runs = runs_;
    runs.assign(1, Run{0, count, 0});
    while (!runs.empty()) {
        const Run run = runs.back();
        runs.pop_back();
        const bool namesGoOn = loadHeads(run);
        if (run.last - run.first <= ShortRun) {
            sortByComparison(run.first, run.last);
            continue;
        }
        radixSortHeads(run.first, run.last);
        for (std::size_t first = run.first, last; first < run.last; first = last) {
            for (last = first + 1; last < run.last && order_[last].head == order_[first].head;)
                ++last;
            if (last - first < 2) continue;
            if (namesGoOn) {
                runs.push_back(Run{first, last, run.depth + sizeof(std::uint64_t)});
            } else {
                sortByComparison(first, last);
            }
        }
    }
}

// Gives each key of run the bytes of its local name from run.depth on; whether any name goes
// on past them.
bool QzXmlReader::loadHeads(const Run& run) {
    bool namesGoOn = false;
    for (std::size_t k = run.first; k < run.last; ++k) {
        const StagedAttribute& a = staged_[order_[k].index];
        const std::size_t length = a.nameLength - a.localStart;
        const std::size_t skip = std::min(length, run.depth);
        order_[k].head = leadingBytes(chars(a.name) + a.localStart + skip, length - skip);
        namesGoOn = namesGoOn || length > run.depth + sizeof(std::uint64_t);
    }
    return namesGoOn;
}

// Least significant byte first, each pass stable; a byte all heads share is skipped.
void QzXmlReader::radixSortHeads(std::size_t first, std::size_t last) {
    const std::size_t count = last - first;
    std::array<std::array<std::uint32_t, 256>, sizeof(std::uint64_t)> counts{};
    for (std::size_t k = first; k < last; ++k) {
        for (std::size_t byte = 0; byte < counts.size(); ++byte)
            ++counts[byte][order_[k].head >> (8 * byte) & 0xFF];
    }
    sortScratch_.resize(count);
    SortKey* from = order_.data() + first;
    SortKey* to = sortScratch_.data();
    for (std::size_t byte = 0; byte < counts.size(); ++byte) {
        std::array<std::uint32_t, 256>& bucket = counts[byte];
        if (bucket[from[0].head >> (8 * byte) & 0xFF] == count) continue;
        std::uint32_t start = 0;
        for (std::uint32_t& n : bucket)
            start += std::exchange(n, start);
        for (std::size_t k = 0; k < count; ++k)
            to[bucket[from[k].head >> (8 * byte) & 0xFF]++] = from[k];
        std::swap(from, to);
    }
    if (from != order_.data() + first) std::copy(from, from + count, order_.data() + first);
}

// The heads mostly decide, without a trip to the document. Ties go by position, which keeps
// the sort stable without the buffer stable_sort takes.
void QzXmlReader::sortByComparison(std::size_t first, std::size_t last) {
    std::sort(order_.begin() + first, order_.begin() + last,
              [this](const SortKey& a, const SortKey& b) {
                  if (a.head != b.head) return a.head < b.head;
                  const int c = compareNames(staged_[a.index], staged_[b.index]);
                  return c != 0 ? c < 0 : a.index < b.index;
              });
}

// An unknown prefix resolves to the empty URI.
void QzXmlReader::resolveName(const QzCString& qualifiedName, QzXmlName& name) const {
    QzXmlNamespace& ns = name.namespace_;
    const char* first = qualifiedName.data();
    const char* last = first + qualifiedName.length();
    const char* c = findColon(first, last);
    if (c != last) {
        setBytes(ns.prefix_, first, c - first);
        setBytes(name.localName_, c + 1, last - c - 1);
    } else {
        setBytes(ns.prefix_, first, 0);
        setBytes(name.localName_, first, last - first);
    }
    setBytes(ns.uri_, namespaceStack_.getURIForPrefix(ns.prefix_));
}

// ---------------------------------------------------------------------------------------------
// The current node, viewed and filed

void QzXmlReader::viewName(const Byte* first, const Byte* last) {
    const std::string_view name(chars(first), last - first);
    const char* colon = findColon(name.data(), name.data() + name.size());
    view_.qualifiedName_ = name;
    view_.localStart_ = colon != name.data() + name.size() ? colon - name.data() + 1 : 0;
    view_.uri_ = uriOf(view_.prefix());
    namePending_ = !nameShared_;
    if (nameShared_) fileName(view_, currentName_);
}

// An unprefixed attribute is in no namespace; a prefixed one in its prefix's, which the
// prefix text stood for while the tag was sorted.
void QzXmlReader::viewAttribute(QzXmlAttributeView& view, const StagedAttribute& name,
                                const StagedAttribute& value) {
    const std::string_view qualified(chars(name.name), name.nameLength);
    view.qualifiedName = qualified;
    view.prefix = qualified.substr(0, name.localStart != 0 ? name.localStart - 1 : 0);
    view.localName = qualified.substr(name.localStart);
    view.uri = name.localStart != 0 ? uriOf(view.prefix) : std::string_view();
    view.value = std::string_view(value.valueText, value.valueLength);
    attributesInScope_ = attributesInScope_ || !view.uri.empty();
}

// The URI lies in the namespace scopes: valid until its scope closes and the next one does.
std::string_view QzXmlReader::uriOf(std::string_view prefix) {
    return viewOf(namespaceStack_.uriForPrefix(prefix));
}

void QzXmlReader::viewText(const Byte* first, const Byte* last) {
    if (valueShared_) {
        setBytes(value_, chars(first), last - first);
        settleValue();
        return;
    }
    view_.text_ = std::string_view(chars(first), last - first);
    valuePending_ = true;
}

void QzXmlReader::attributesChanged() {
    attributesPending_ = true;
    if (attributesShared_) fileAttributes();
}

// A text that needs building is built in value_, which the view shows once it is done.
void QzXmlReader::startValue() {
    value_.resize(0);
    view_.text_ = std::string_view();
    valuePending_ = false;
}

void QzXmlReader::settleValue() {
    view_.text_ = viewOf(value_);
    valuePending_ = false;
}

void QzXmlReader::fileName() const {
    fileName(view_, currentName_);
    namePending_ = false;
}

void QzXmlReader::fileName(const QzXmlNodeView& view, QzXmlName& name) {
    setBytes(name.namespace_.prefix_, view.prefix());
    setBytes(name.localName_, view.localName());
    setBytes(name.namespace_.uri_, view.uri_);
}

void QzXmlReader::fileAttributes() const {
    std::vector<QzXmlAttribute>& filed = currentAttributes_.attributes_;
    filed.resize(view_.attributeCount_);
    for (std::size_t i = 0; i < filed.size(); ++i)
        fileAttribute(filed[i], view_.attributes_[i]);
    attributesPending_ = false;
}

// Inlined where attributes are filed one after another, as they are for every tag of a caller
// that holds the owned set.
[[gnu::always_inline]] inline void QzXmlReader::fileAttribute(QzXmlAttribute& filed,
                                                              const QzXmlAttributeView& view) {
    QzXmlName& name = filed.name_;
    setBytes(name.localName_, view.localName);
    setBytes(name.namespace_.prefix_, view.prefix);
    setBytes(name.namespace_.uri_, view.uri);
    setBytes(filed.value_, view.value);
}

// The view then shows value_, which stays as it is until the next text.
void QzXmlReader::fileValue() const {
    setBytes(value_, view_.text_);
    view_.text_ = viewOf(value_);
    valuePending_ = false;
}

// Copies the view's name and attributes into a store of its own, and its text into value_,
// before what they point into moves or goes.
void QzXmlReader::detachView() {
    if (valuePending_) fileValue();
    std::size_t size = view_.qualifiedName_.size() + view_.uri_.size();
    const auto first = view_.attributes_.begin();
    const auto last = first + static_cast<std::ptrdiff_t>(view_.attributeCount_);
    for (auto a = first; a != last; ++a)
        size += a->qualifiedName.size() + a->uri.size() + a->value.size();
    // The view may point into viewStore_ itself: the copy goes to the other store.
    StoreWriter store(spareStore_, size);
    view_.qualifiedName_ = store.copy(view_.qualifiedName_);
    view_.uri_ = store.copy(view_.uri_);
    for (auto a = first; a != last; ++a) {
        const std::size_t localStart = a->qualifiedName.size() - a->localName.size();
        a->qualifiedName = store.copy(a->qualifiedName);
        a->prefix = a->qualifiedName.substr(0, a->prefix.size());
        a->localName = a->qualifiedName.substr(localStart);
        a->uri = store.copy(a->uri);
        a->value = store.copy(a->value);
    }
    viewStore_.swap(spareStore_);
    attributesInScope_ = false;
}

bool QzXmlReader::currentNameIs(const QzCString& localName, const QzCString& uri) const {
    return view_.localName() == viewOf(localName) && view_.uri_ == viewOf(uri);
}

QzXmlName QzXmlReader::getXmlName(const QzCString& qualifiedName) const {
    QzXmlName name;
    resolveName(qualifiedName, name);
    return name;
}

void QzXmlReader::addNamespace(const QzXmlNamespace& ns) {
    // The scope may grow and move the URIs the view shows.
    detachView();
    namespaceStack_.addNamespace(ns);
}

// ---------------------------------------------------------------------------------------------
// Character data

void QzXmlReader::readContent() {
    if (takePendingNode()) return;
    if (window_) {
        readContentThroughWindow();
        return;
    }
    checked_ ? readContentAs<true>() : readContentAs<false>();
}

// A node read ahead is the one asked for now.
bool QzXmlReader::takePendingNode() {
    if (!nodePending_) return false;
    nodePending_ = false;
    return true;
}

template <bool Checked>
void QzXmlReader::readContentAs() {
    if constexpr (Checked) {
        if (strict_) {
            readStrictContent();
            return;
        }
    }
    nodeType_ = Content;
    Byte* stop = findStop(cursor_, limit_, kContentStop);
    // Most texts run straight to the next tag.
    if (limit_ - stop >= 2 && stop[0] == '<' && stop[1] != '?' && stop[1] != '!') {
        if constexpr (Checked) checkTextLength(cursor_, stop - cursor_);
        viewText(cursor_, stop);
        cursor_ = stop;
        return;
    }
    startValue();
    [[maybe_unused]] const Byte* start = cursor_;
    for (;; stop = findStop(cursor_, limit_, kContentStop)) {
        value_.append(chars(cursor_), stop - cursor_);
        cursor_ = stop;
        if (atEnd()) prematureEof();
        if (*cursor_ == '&') {
            ++cursor_;
            appendReference(value_);
        } else if (*cursor_ == '\r') {
            ++cursor_;
            if (atEnd()) prematureEof();
            if (*cursor_ == '\n') ++cursor_;
            value_ += '\n';
        } else if (!readMarkupInContent()) {
            if constexpr (Checked) checkTextLength(start, value_.length());
            settleValue();
            return;
        }
    }
}

// With the cursor on a "<" inside text: reads a comment, processing instruction or CDATA
// section and answers true, or answers false for a tag, which ends the text.
bool QzXmlReader::readMarkupInContent() {
    if (limit_ - cursor_ < 2) prematureEof();
    const Byte* open = cursor_;
    if (cursor_[1] == '?') {
        cursor_ += 2;
        if (readPIOrXmlDecl()) logMarkup(open, true);
        return true;
    }
    if (cursor_[1] != '!') return false;
    if (limit_ - cursor_ < 3) prematureEof();
    const Byte third = cursor_[2];
    if (third == '-') {
        cursor_ += 2;
        readComment();
        logMarkup(open, true);
    } else if (third == '[') {
        cursor_ += 3;
        readCDATA();
    } else {
        cursor_ += 3;
        errInvalidBang(third);
    }
    return true;
}

void QzXmlReader::errInvalidBang(Byte third) const {
    err(QzCString("Invalid character sequence <!") + QzCString(chars(&third), 1));
}

void QzXmlReader::appendReference(QzCString& out) {
    const void* semicolon = std::memchr(cursor_, ';', limit_ - cursor_);
    if (semicolon == nullptr) prematureEof();
    const Byte* name = cursor_;
    const std::size_t length = static_cast<const Byte*>(semicolon) - name;
    cursor_ += length + 1;
    if (length == 0) throwBoundsErr(0, 0);
    if (name[0] == '#') {
        if (length == 1) throwBoundsErr(1, 1);
        appendUtf8(out, characterReference(name + 1, name + length));
        return;
    }
    if (appendPredefined(out, name, length)) return;
    // A document's own entities are not known: the reference passes through unchanged.
    out += '&';
    out.append(chars(name), length);
    out += ';';
}

// The value of the digits between first and last ("x" and hexadecimal digits, or decimal
// digits); it wraps silently, and no code point is refused.
std::uint64_t QzXmlReader::characterReference(const Byte* first, const Byte* last) const {
    std::uint64_t value = 0;
    if (*first == 'x') {
        for (const Byte* p = first + 1; p < last; ++p) {
            const int digit = hexDigit(*p);
            if (digit < 0) err("invalid character in hexadecimal character reference.");
            value = value * 16 + static_cast<unsigned>(digit);
        }
        return value;
    }
    for (const Byte* p = first; p < last; ++p) {
        if (*p < '0' || *p > '9') err("invalid character in decimal character reference.");
        value = value * 10 + (*p - '0');
    }
    return value;
}

// Copies the section up to the first "]]>" exactly: no references, carriage returns kept.
void QzXmlReader::readCDATA() {
    QzCString name;
    readName(name);
    if (!equals(name, "CDATA")) err("'<![' wasn't followed by 'CDATA'");
    if (takeByte() != '[') err("'<![CDATA' wasn't followed by '['");
    const Byte* start = cursor_;
    for (Byte* p = cursor_;;) {
        void* gt = std::memchr(p, '>', limit_ - p);
        if (gt == nullptr) prematureEof();
        p = static_cast<Byte*>(gt);
        if (p - start >= 2 && p[-1] == ']' && p[-2] == ']') {
            value_.append(chars(start), p - 2 - start);
            cursor_ = p + 1;
            return;
        }
        ++p;
    }
}

// ---------------------------------------------------------------------------------------------
// Navigation

void QzXmlReader::readNextNode() {
    if (takePendingNode()) return;
    if (window_) {
        readNextNodeThroughWindow();
        return;
    }
    checked_ ? readNextNodeAs<true>() : readNextNodeAs<false>();
}

template <bool Checked>
void QzXmlReader::readNextNodeAs() {
    if constexpr (Checked) {
        if (strict_) {
            readStrictNextNode();
            return;
        }
    }
    for (;;) {
        if (atEnd()) prematureEof();
        if (*cursor_ != '<') {
            readContentAs<Checked>();
            return;
        }
        const Byte* open = cursor_++;
        if (atEnd()) prematureEof();
        if (*cursor_ == '?') {
            ++cursor_;
            if (readPIOrXmlDecl()) logMarkup(open, false);
            if (atEnd()) prematureEof();
        } else if (*cursor_ == '!') {
            if (limit_ - cursor_ < 2) prematureEof();
            const Byte next = cursor_[1];
            if (next == '-') {
                ++cursor_;
                readComment();
                logMarkup(open, false);
            } else if (next == '[') {
                --cursor_;
                readContentAs<Checked>();
                return;
            } else {
                cursor_ += 2;
                errInvalidBang(next);
            }
        } else {
            lastTagStart_ = cursor_ - 1;
            readTagAs<Checked>();
            return;
        }
    }
}

// Reads the text before the next node (discarding it) and then that node.
void QzXmlReader::readNodeAfterText() {
    readContent();
    readNextNode();
}

// Local names must be equal; an empty wanted URI stands for the URI of the wanted prefix.
bool QzXmlReader::matches(const QzXmlName& name) const {
    return currentNameIs(
        name.getLocalName(),
        name.getURI().empty() ? namespaceStack_.getURIForPrefix(name.getPrefix()) : name.getURI());
}

void QzXmlReader::errExpected(const QzXmlName& wanted) const {
    err(kExpected + wanted.asString() + kFound + getCurrentName().asString());
}

bool QzXmlReader::isElementNext(const QzXmlName& name) {
    // An empty element just started counts as the next element itself.
    if (!nodePending_ && nodeType_ != EmptyElement) {
        readNodeAfterText();
        nodePending_ = true;
    }
    return (nodeType_ == StartTag || nodeType_ == EmptyElement) && matches(name);
}

void QzXmlReader::readElementStart() {
    if (nodePending_) {
        nodePending_ = false;
    } else {
        readNodeAfterText();
    }
    if (nodeType_ != StartTag && nodeType_ != EmptyElement) err("Couldn't find start tag");
}

const QzXmlAttributeSet& QzXmlReader::readElementStart(const QzXmlName& name) {
    readElementStart();
    if (!matches(name)) errExpected(name);
    return getCurrentAttributes();
}

const QzXmlAttributeSet& QzXmlReader::readElementStart(const QzCString& name) {
    return readElementStart(getXmlName(name));
}

const QzCString& QzXmlReader::readElementValue() {
    if (nodeType_ == EmptyElement) {
        value_.resize(0);
        settleValue();
    } else {
        readContent();
    }
    return getValue();
}

void QzXmlReader::readElementEnd() {
    if (nodeType_ == EmptyElement) {
        nodeType_ = EndTag;
        nodePending_ = false;
        return;
    }
    if (nodePending_) {
        nodePending_ = false;
    } else {
        readNodeAfterText();
    }
    if (nodeType_ != EndTag) err("Couldn't find end tag");
}

void QzXmlReader::readElementEnd(const QzXmlName& name) {
    readElementEnd();
    if (!currentNameIs(name.getLocalName(), name.getURI())) errExpected(name);
}

void QzXmlReader::readElementEnd(const QzCString& name) {
    readElementEnd(getXmlName(name));
}

// A start tag that was read ahead lies before the copy start, so it is written out again
// from its parts: values as stored, nothing escaped, a blank after every attribute.
QzCString QzXmlReader::rebuildStartTag() const {
    QzCString tag("<");
    tag += getCurrentName().asString();
    tag += ' ';
    for (const QzXmlAttribute& attribute : getCurrentAttributes()) {
        tag += attribute.getName().asString();
        tag += "=\"";
        tag += attribute.getValue();
        tag += "\" ";
    }
    if (nodeType_ == EmptyElement) tag += '/';
    tag += '>';
    return tag;
}

QzCString QzXmlReader::readElement(const QzXmlName& name) {
    RawCopy copy{cursor_, nullptr, documentBuffer_, QzCString(), QzCString()};
    const RawCopyScope scope(rawCopy_, copy);
    if (!nodePending_) readNodeAfterText();
    // A start tag in an entity's replacement text is copied from there: an element ends in
    // the text it starts in, but the text before it may lie elsewhere.
    if (documentBuffer_ != copy.buffer) copy.start = lastTagStart_;
    if (nodeType_ != StartTag && nodeType_ != EmptyElement) {
        nodePending_ = true;
        value_.resize(0);
        settleValue();
        return QzCString();
    }
    QzCString result;
    if (nodePending_) {
        result = rebuildStartTag();
        nodePending_ = false;
    }
    if (name != NullName && !matches(name)) errExpected(name);
    if (nodeType_ == EmptyElement) {
        value_.resize(0);
        settleValue();
        return result;
    }
    QzXmlAttributeSet keptAttributes = getCurrentAttributes();
    const QzXmlName keptName = getCurrentName();
    // The element's attributes are its own again at the end, as owned strings and as views,
    // whose strings wait in a store of their own.
    detachView();
    std::vector<char> keptStore;
    keptStore.swap(viewStore_);
    const std::vector<QzXmlAttributeView> keptViews(
        view_.attributes_.begin(),
        view_.attributes_.begin() + static_cast<std::ptrdiff_t>(view_.attributeCount_));
    view_.attributeCount_ = 0;
    copy.inner = cursor_;
    try {
        for (std::int64_t nesting = 1; nesting > 0;) {
            readNextNode();
            if (nodeType_ == NoNode) err("Unexpected EOF looking for closing tag.");
            if (isTag(nodeType_) && currentNameIs(keptName.getLocalName(), keptName.getURI())) {
                nesting += nodeType_ == StartTag ? 1 : nodeType_ == EndTag ? -1 : 0;
            }
        }
    } catch (...) {
        // The name may still lie in the kept store.
        detachView();
        throw;
    }
    currentAttributes_ = std::move(keptAttributes);
    attributesPending_ = false;
    if (view_.attributes_.size() < keptViews.size()) view_.attributes_.resize(keptViews.size());
    std::copy(keptViews.begin(), keptViews.end(), view_.attributes_.begin());
    view_.attributeCount_ = keptViews.size();
    detachView();
    value_.assign(copy.innerSaved);
    value_.append(chars(copy.inner), lastTagStart_ - copy.inner);
    settleValue();
    result += copy.saved;
    result.append(chars(copy.start), cursor_ - copy.start);
    return result;
}

// A declaration inside the element being copied may replace the buffer: the text read so far
// is saved while the old buffer still exists, and the copy goes on from the new cursor.
void QzXmlReader::saveRawCopy() {
    if (!rawCopy_) return;
    rawCopy_->saved.append(chars(rawCopy_->start), cursor_ - rawCopy_->start);
    if (rawCopy_->inner) {
        rawCopy_->innerSaved.append(chars(rawCopy_->inner), cursor_ - rawCopy_->inner);
    }
}

void QzXmlReader::rebaseRawCopy() {
    if (!rawCopy_) return;
    rawCopy_->start = cursor_;
    if (rawCopy_->inner) rawCopy_->inner = cursor_;
}

QzCString QzXmlReader::readElement(const QzCString& name) {
    return readElement(getXmlName(name));
}

// ---------------------------------------------------------------------------------------------
// Limits

void QzXmlReader::errAt(const Byte* at, const QzCString& message) {
    // A place in replacement text already left (a text that began in an entity) is reported
    // where reading stands: line and column count the document's bytes only.
    const auto place = reinterpret_cast<std::uintptr_t>(at);
    if (place >= reinterpret_cast<std::uintptr_t>(documentBuffer_) &&
        place <= reinterpret_cast<std::uintptr_t>(limit_)) {
        cursor_ = const_cast<Byte*>(at);
    }
    err(message);
}

// A limit met with part of the input may give way to an error further on once all of it has
// come, as it would in memory.
void QzXmlReader::errLimit(const Byte* at, const char* what, const char* limit, std::size_t value) {
    errorUnsettled_ = true;
    errAt(at, QzCString(what) + " exceeds " + limit + " (" + std::to_string(value) + ")");
}

void QzXmlReader::errUnsettled(const Byte* at, const char* message) {
    errorUnsettled_ = true;
    errAt(at, message);
}

void QzXmlReader::checkNameLength(const Byte* start) {
    if (static_cast<std::size_t>(cursor_ - start) > maxNameLength_)
        errLimit(start, "A name's length", "maxNameLength", maxNameLength_);
}

void QzXmlReader::checkTextLength(const Byte* at, std::size_t length) {
    if (length > maxTextLength_) errLimit(at, "A text's length", "maxTextLength", maxTextLength_);
}

// ---------------------------------------------------------------------------------------------
// Strict reading

namespace {

// The literal's length is known where it is written, so the compare is a few instructions.
template <std::size_t N>
bool startsWith(const Byte* p, const Byte* limit, const char (&literal)[N]) {
    return static_cast<std::size_t>(limit - p) >= N - 1 && std::memcmp(p, literal, N - 1) == 0;
}

bool isAsciiLetter(Byte b) {
    return (b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z');
}

bool equalsIgnoringCase(const Byte* p, std::size_t length, const char* upper) {
    if (std::strlen(upper) != length) return false;
    for (std::size_t i = 0; i < length; ++i) {
        const Byte c = p[i] >= 'a' && p[i] <= 'z' ? p[i] - 'a' + 'A' : p[i];
        if (c != static_cast<Byte>(upper[i])) return false;
    }
    return true;
}

QzCString upperCase(const QzCString& text) {
    QzCString upper(text);
    for (std::size_t i = 0; i < upper.length(); ++i) {
        char& c = upper.data()[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return upper;
}

// Encodings whose bytes are not a superset of ASCII: a declaration naming one cannot have
// been read as ASCII.
bool isWideName(const QzCString& upper) {
    const std::string& name = upper.std();
    return name.rfind("UTF-16", 0) == 0 || name.rfind("UTF-32", 0) == 0 ||
           name.rfind("UCS-", 0) == 0 || name.rfind("ISO-10646-UCS-", 0) == 0;
}

// UTF-8 of a code point the caller has checked to be a character.
void appendCharacter(QzCString& out, std::uint32_t c) {
    char bytes[4];
    int n = 0;
    if (c < 0x80) {
        bytes[n++] = static_cast<char>(c);
    } else if (c < 0x800) {
        bytes[n++] = static_cast<char>(0xC0 | (c >> 6));
        bytes[n++] = static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        bytes[n++] = static_cast<char>(0xE0 | (c >> 12));
        bytes[n++] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | (c & 0x3F));
    } else {
        bytes[n++] = static_cast<char>(0xF0 | (c >> 18));
        bytes[n++] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        bytes[n++] = static_cast<char>(0x80 | (c & 0x3F));
    }
    out.append(bytes, n);
}

// Bytes that end a run of attribute value for the strict reader: the quotes, markup, and the
// whitespace that normalisation turns into spaces (carriage returns come only from an
// entity's replacement text).
constexpr ByteTable kPubidExtra(" \r\n-'()+,./:=?;!*#@$_%");

bool isPubidChar(Byte b) {
    return (b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z') || (b >= '0' && b <= '9') ||
           kPubidExtra[b];
}

}  // namespace

void QzXmlReader::errExpected(const Byte* at, const char* wanted) {
    errAt(at, QzCString("Expected ") + wanted + ", found " + QzXmlCharChecks::describe(at, limit_));
}

// A name by the fifth edition's productions, its length within the limit.
const QzXmlReader::Byte* QzXmlReader::scanStrictName() {
    const Byte* start = cursor_;
    if (atEnd()) errExpected(cursor_, "a name");
    const Byte* p = cursor_;
    if (*p < 0x80) {
        if (!kAsciiNameStart[*p]) errExpected(p, "a name");
        ++p;
    } else {
        skipCharacter(p);
        if (!QzXmlCharChecks::isNameStartChar(QzXmlCharChecks::decode(p)))
            errExpected(start, "a name");
    }
    for (;;) {
        while (p < limit_ && kAsciiNameByte[*p])
            ++p;
        if (p >= limit_ || *p < 0x80) break;
        const Byte* at = p;
        skipCharacter(p);
        if (!QzXmlCharChecks::isNameChar(QzXmlCharChecks::decode(p))) {
            p = at;
            break;
        }
    }
    cursor_ = const_cast<Byte*>(p);
    // A name cut by the window's end may yet go on: what is said of it waits for the rest.
    if (p == limit_) errorUnsettled_ = true;
    checkNameLength(start);
    return start;
}

// At most one colon, and then a name on each side of it.
void QzXmlReader::checkQName(const Byte* start, const Byte* end, const char* what) {
    const char* colon = findColon(chars(start), chars(end));
    if (colon == chars(end)) return;
    checkQName(start, end, colon - chars(start) + 1, what);
}

// The same for a name whose first colon is known to stand just before localStart: a local
// name of ASCII first character and no colon, the common case, is checked here, in line.
[[gnu::always_inline]] inline void QzXmlReader::checkQName(const Byte* start, const Byte* end,
                                                           std::size_t localStart,
                                                           const char* what) {
    const Byte* local = start + localStart;
    if (localStart == 1 || local >= end || *local >= 0x80 || !kAsciiNameStart[*local] ||
        *local == ':' || findColon(chars(local), chars(end), limit_) != chars(end)) {
        checkQNameFully(start, end, localStart, what);
    }
}

// The whole check, non-ASCII local names included ("a:" and "a::b" fail here too).
void QzXmlReader::checkQNameFully(const Byte* start, const Byte* end, std::size_t localStart,
                                  const char* what) {
    const Byte* local = start + localStart;
    const Byte* after = local;
    const bool localStarts =
        local < end &&
        (*local < 0x80 ? kAsciiNameStart[*local] && *local != ':'
                       : QzXmlCharChecks::isNameStartChar(QzXmlCharChecks::decode(after)));
    if (localStart == 1 || !localStarts ||
        findColon(chars(local), chars(end), limit_) != chars(end)) {
        errAt(start, QzCString("The ") + what + " name '" + QzCString(chars(start), end - start) +
                         "' is not a qualified name: expected a prefix, one colon and a local "
                         "name, each a name without colons");
    }
}
// ---- Prolog

void QzXmlReader::readStrictProlog() {
    const Byte* oldBuffer = documentBuffer_;
    const Byte* before = cursor_;
    readAndProcessBOM();
    const bool utf8Mark = documentBuffer_ == oldBuffer && cursor_ == before + 3;
    if (startsWith(cursor_, limit_, "<?xml") && limit_ - cursor_ > 5 && kWhitespace[cursor_[5]]) {
        const QzCString detected = encodingName_;
        cursor_ += 5;
        const Byte* declared = readStrictXmlDecl();
        if (declared != nullptr) agreeOnEncoding(detected, utf8Mark, declared);
    }
    normalizeLineEnds();
    while (readStrictMisc()) {
    }
    if (atEnd()) errAt(cursor_, "The document has no root element");
    if (*cursor_ != '<' || limit_ - cursor_ < 2 || cursor_[1] == '!' || cursor_[1] == '/') {
        errExpected(cursor_, "the root element");
    }
}

// Reads Eq: optional whitespace, "=", optional whitespace.
void QzXmlReader::readStrictEq() {
    readS();
    if (atEnd() || *cursor_ != '=') errExpected(cursor_, "'='");
    ++cursor_;
    readS();
}

// A quoted value of the XML declaration; returns its start, the cursor after its end quote.
const QzXmlReader::Byte* QzXmlReader::readStrictLiteral(const char* what) {
    if (atEnd() || (*cursor_ != '"' && *cursor_ != '\'')) errExpected(cursor_, what);
    const Byte quote = *cursor_++;
    const Byte* start = cursor_;
    // Values here are a few bytes long: a loop beats a call to memchr.
    const Byte* end = start;
    while (end < limit_ && *end != quote)
        ++end;
    if (end == limit_) errAt(limit_, QzCString("Premature EOF: ") + what + " is not closed");
    checkCharacters(start, end);
    cursor_ = const_cast<Byte*>(end) + 1;
    return start;
}

// version, then encoding and standalone if present, in that order; the cursor after "<?xml".
// Returns where the encoding name stands, null without one; encodingName_ holds it then.
const QzXmlReader::Byte* QzXmlReader::readStrictXmlDecl() {
    const Byte* encoding = nullptr;
    readS();
    if (!startsWith(cursor_, limit_, "version")) errExpected(cursor_, "'version'");
    cursor_ += 7;
    readStrictEq();
    const Byte* version = readStrictLiteral("a quoted version");
    const std::size_t versionLength = cursor_ - 1 - version;
    bool digits = versionLength > 2 && std::memcmp(version, "1.", 2) == 0;
    for (std::size_t i = 2; digits && i < versionLength; ++i)
        digits = version[i] >= '0' && version[i] <= '9';
    if (!digits) {
        errAt(version, "The version must be '1.' followed by digits, found '" +
                           QzCString(chars(version), versionLength) + "'");
    }
    declaredVersion_.assign(chars(version), versionLength);
    for (int part = 0;; ++part) {
        const Byte* spaced = cursor_;
        readS();
        if (startsWith(cursor_, limit_, "?>")) {
            cursor_ += 2;
            return encoding;
        }
        if (spaced == cursor_) errExpected(cursor_, "whitespace or '?>'");
        if (part == 0 && startsWith(cursor_, limit_, "encoding")) {
            cursor_ += 8;
            readStrictEq();
            const Byte* name = readStrictLiteral("a quoted encoding name");
            const std::size_t length = cursor_ - 1 - name;
            bool valid = length > 0 && isAsciiLetter(name[0]);
            for (std::size_t i = 1; valid && i < length; ++i) {
                valid = isAsciiLetter(name[i]) || (name[i] >= '0' && name[i] <= '9') ||
                        name[i] == '.' || name[i] == '_' || name[i] == '-';
            }
            if (!valid) {
                errAt(name,
                      "Expected an encoding name (a letter, then letters, digits, '.', '_' or "
                      "'-'), found '" +
                          QzCString(chars(name), length) + "'");
            }
            encodingName_.assign(chars(name), length);
            encodingDeclared_ = true;
            encoding = name;
        } else if (part <= 1 && startsWith(cursor_, limit_, "standalone")) {
            cursor_ += 10;
            readStrictEq();
            const Byte* value = readStrictLiteral("a quoted 'yes' or 'no'");
            const std::size_t length = cursor_ - 1 - value;
            declaredStandalone_.assign(chars(value), length);
            if (declaredStandalone_ != "yes" && declaredStandalone_ != "no") {
                errAt(value,
                      "standalone must be 'yes' or 'no', found '" + declaredStandalone_ + "'");
            }
            standaloneDeclared_ = true;
            part = 1;
        } else {
            errExpected(cursor_, part == 0   ? "'encoding', 'standalone' or '?>'"
                                 : part == 1 ? "'standalone' or '?>'"
                                             : "'?>'");
        }
    }
}

// The declared encoding must name the one the bytes are in; a declared 8-bit encoding is
// then decoded as the lenient reader decodes it.
void QzXmlReader::agreeOnEncoding(const QzCString& detected, bool utf8Mark, const Byte* at) {
    // UTF-8 declared for UTF-8 bytes, nearly every document, leaves nothing to do.
    if (detected == "UTF-8" &&
        equalsIgnoringCase(reinterpret_cast<const Byte*>(encodingName_.data()),
                           encodingName_.length(), "UTF-8")) {
        return;
    }
    const QzCString declared = encodingName_;
    const QzCString upper = upperCase(declared);
    // Built only when needed: a document that agrees allocates nothing here.
    const auto disagree = [&](const QzCString& what) {
        errAt(at, "The declared encoding '" + declared + "' " + what);
    };
    if (detected != "UTF-8") {
        // Decoded already from the byte-order mark or the first bytes: the declaration
        // can only name the same family.
        if (upper.std().compare(0, 6, upperCase(detected).std(), 0, 6) != 0)
            disagree("does not match the document's encoding, " + detected);
        return;
    }
    if (isWideName(upper))
        disagree("does not match the document, whose bytes are in an 8-bit encoding");
    if (utf8Mark && upper != "UTF-8") disagree("contradicts the document's UTF-8 byte-order mark");
    if ((upper == "US-ASCII" || upper == "ASCII") && window_) {
        const std::ptrdiff_t at = cursor_ - documentBuffer_;
        const bool ascii = window_->requireAsciiFrom(cursor_);
        documentBuffer_ = window_->begin();
        cursor_ = documentBuffer_ + at;
        limit_ = window_->end();
        if (!ascii) failOnWindowError();
    } else if (upper == "US-ASCII" || upper == "ASCII") {
        for (const Byte* p = cursor_; p < limit_; ++p) {
            if (*p >= 0x80)
                errAt(p, "The encoding is US-ASCII, but the document holds " +
                             QzXmlCharChecks::describe(p, limit_));
        }
    }
    encodingName_ = detected;
    transcodeDocument(declared);
}

// Every character is one XML allows, in well-formed UTF-8; line ends become line feeds.
void QzXmlReader::normalizeLineEnds() {
    if (window_) {
        const std::ptrdiff_t at = cursor_ - documentBuffer_;
        window_->normalizeLineEndsFrom(cursor_);
        documentBuffer_ = window_->begin();
        cursor_ = documentBuffer_ + at;
        limit_ = window_->end();
        return;
    }
    if (std::memchr(cursor_, '\r', limit_ - cursor_) == nullptr) return;
    if (!ownsBuffer_) {
        // The caller's bytes are not rewritten: the reader works on its own copy.
        const std::ptrdiff_t offset = cursor_ - documentBuffer_;
        ownedText_.assign(chars(documentBuffer_), limit_ - documentBuffer_);
        adoptOwnedText();
        cursor_ += offset;
    }
    limit_ = QzXmlCharChecks::normalizeLineEnds(cursor_, limit_);
    ownedText_.resize(limit_ - documentBuffer_);
}

// Characters are checked as they are read, in the same passes: p stands on a byte that is not
// plain ASCII text; returns the byte after its character, which must be one XML allows.
const QzXmlReader::Byte* QzXmlReader::skipCharacter(const Byte* p) {
    const int length = QzXmlCharChecks::characterLength(p, limit_);
    if (length == 0) errAt(p, QzXmlCharChecks::describeInvalidCharacter(p, limit_));
    return p + length;
}

// Checks every character of [first, last), text read by a plain search.
void QzXmlReader::checkCharacters(const Byte* first, const Byte* last) {
    const Byte* bad = QzXmlCharChecks::firstInvalidCharacter(first, last);
    if (bad != last) errAt(bad, QzXmlCharChecks::describeInvalidCharacter(bad, last));
}

// An attribute value up to its quote, markup or whitespace, its characters checked on the way.
QzXmlReader::Byte* QzXmlReader::scanStrictValue(Byte* p, Byte quote) {
    for (;;) {
        p = const_cast<Byte*>(QzXmlCharChecks::findValueStop(p, limit_, quote));
        if (p == limit_ || !QzXmlCharChecks::needsCheck(*p)) return p;
        p = const_cast<Byte*>(skipCharacter(p));
    }
}

// Text up to the next "<", "&" or "]" (or the end), its characters checked on the way.
QzXmlReader::Byte* QzXmlReader::scanStrictText(Byte* p) {
    p = const_cast<Byte*>(QzXmlCharChecks::findTextStop(p, limit_));
    if (p != limit_ && *p != '<' && *p != '&' && *p != ']') {
        errAt(p, QzXmlCharChecks::describeInvalidCharacter(p, limit_));
    }
    return p;
}

// Whitespace, a comment or a processing instruction, or the document type declaration in the
// prolog; false when none comes next.
bool QzXmlReader::readStrictMisc() {
    readS();
    const Byte* open = cursor_;
    if (startsWith(cursor_, limit_, "<?")) {
        cursor_ += 2;
        readStrictPI(open);
        logMarkup(open, false);
        return true;
    }
    if (startsWith(cursor_, limit_, "<!--")) {
        cursor_ += 4;
        readStrictComment(open);
        logMarkup(open, false);
        return true;
    }
    if (!rootSeen_ && startsWith(cursor_, limit_, "<!DOCTYPE")) {
        readStrictDoctype(open);
        return true;
    }
    return false;
}

// The declaration's name and external identifier are read, and its internal subset
// declaration by declaration; nothing external is fetched. The cursor stands on "<!DOCTYPE".
void QzXmlReader::readStrictDoctype(const Byte* open) {
    if (prohibitDoctype_) errAt(open, "A document type declaration is prohibited here");
    if (hasDoctype_) errAt(open, "Only one document type declaration is allowed");
    hasDoctype_ = true;
    doctype_ = std::make_unique<QzXmlDoctype>();
    cursor_ += 9;
    requireS("after '<!DOCTYPE'");
    const Byte* name = scanStrictName();
    checkQName(name, cursor_, "document type");
    const Byte* spaced = cursor_;
    readS();
    if (startsWith(cursor_, limit_, "SYSTEM") || startsWith(cursor_, limit_, "PUBLIC")) {
        if (spaced == cursor_) errExpected(cursor_, "whitespace before the external identifier");
        readStrictExternalId();
        // The external subset is not read: what it might declare is not known.
        entitiesRelaxed_ = true;
        readS();
    }
    if (!atEnd() && *cursor_ == '[') {
        ++cursor_;
        readInternalSubset();
        readS();
    }
    if (atEnd() || *cursor_ != '>')
        errExpected(cursor_, "'>' to end the document type declaration");
    ++cursor_;
}

void QzXmlReader::requireS(const char* where) {
    if (atEnd() || !kWhitespace[*cursor_]) {
        errExpected(cursor_, (std::string("whitespace ") + where).c_str());
    }
    readS();
}

// SYSTEM "uri", or PUBLIC "public id" "uri" (the system literal optional where
// publicOnlyAllowed, as in a notation declaration); nothing is fetched.
void QzXmlReader::readStrictExternalId(bool publicOnlyAllowed) {
    const bool isPublic = *cursor_ == 'P';
    cursor_ += 6;
    requireS("after the keyword");
    if (isPublic) {
        const Byte* id = readStrictLiteral("a quoted public identifier");
        for (const Byte* p = id; p < cursor_ - 1; ++p) {
            if (!isPubidChar(*p)) {
                errAt(p, "The character " + QzXmlCharChecks::describe(p, limit_) +
                             " is not allowed in a public identifier");
            }
        }
        const Byte* spaced = cursor_;
        readS();
        if (publicOnlyAllowed && !atEnd() && *cursor_ == '>') return;
        if (spaced == cursor_) errExpected(cursor_, "whitespace before the system identifier");
    }
    const Byte* uri = readStrictLiteral("a quoted system identifier");
    if (std::memchr(uri, '#', cursor_ - 1 - uri) != nullptr) {
        errAt(uri, "A system identifier must not contain a fragment ('#')");
    }
}

// Markup declarations, comments, instructions and parameter-entity references up to "]".
void QzXmlReader::readInternalSubset() {
    for (;;) {
        readS();
        if (atEnd()) {
            if (leaveEntity()) continue;
            errAt(cursor_, "Premature EOF: the internal subset is not closed by ']'");
        }
        const Byte* open = cursor_;
        if (*cursor_ == ']') {
            if (!frames_.empty())
                errAt(cursor_, "']' inside a parameter entity's replacement text");
            ++cursor_;
            return;
        }
        if (*cursor_ == '%') {
            ++cursor_;
            readParameterReference();
        } else if (startsWith(cursor_, limit_, "<!--")) {
            cursor_ += 4;
            readStrictComment(open);
        } else if (startsWith(cursor_, limit_, "<?")) {
            cursor_ += 2;
            readStrictPI(open);
            logMarkup(open, false);
        } else if (startsWith(cursor_, limit_, "<!")) {
            readMarkupDeclaration(open);
        } else {
            errExpected(cursor_, "a markup declaration, comment, processing instruction or ']'");
        }
    }
}

// A parameter-entity reference between declarations: an internal entity's replacement text
// is read as declarations; an external or undeclared one is not read, and declarations after
// it are then not processed (unless the document is standalone).
void QzXmlReader::readParameterReference() {
    const Byte* name = scanStrictName();
    if (atEnd() || *cursor_ != ';') errExpected(cursor_, "';' after the parameter entity name");
    ++cursor_;
    // Any reference makes what is declared depend on entities a reader may not read.
    entitiesRelaxed_ = true;
    const QzXmlDoctype::Entity* entity =
        doctype_->find(std::string_view(chars(name), cursor_ - 1 - name), true);
    if (entity == nullptr || entity->external) {
        if (entity == nullptr && declaredStandalone_ == "yes") {
            errAt(name - 1, "The parameter entity '" + QzCString(chars(name), cursor_ - 1 - name) +
                                "' is not declared");
        }
        skippingDeclarations_ = declaredStandalone_ != "yes";
        return;
    }
    enterEntity(name - 1, entity, entity->replacement);
}

// After "<!": an element type, attribute-list, entity or notation declaration.
void QzXmlReader::readMarkupDeclaration(const Byte* open) {
    const std::size_t frames = frames_.size();
    if (startsWith(cursor_, limit_, "<!ELEMENT")) {
        cursor_ += 9;
        readElementDecl();
    } else if (startsWith(cursor_, limit_, "<!ATTLIST")) {
        cursor_ += 9;
        readAttlistDecl();
    } else if (startsWith(cursor_, limit_, "<!ENTITY")) {
        cursor_ += 8;
        readEntityDecl();
    } else if (startsWith(cursor_, limit_, "<!NOTATION")) {
        cursor_ += 10;
        readNotationDecl();
    } else {
        errExpected(open + 2, "ELEMENT, ATTLIST, ENTITY or NOTATION after '<!'");
    }
    readS();
    if (atEnd() || *cursor_ != '>') errExpected(cursor_, "'>' to end the declaration");
    ++cursor_;
    // A declaration begins and ends in the same entity.
    if (frames_.size() != frames) errAt(cursor_, "A declaration crosses an entity boundary");
}

void QzXmlReader::readElementDecl() {
    requireS("after '<!ELEMENT'");
    const Byte* name = scanStrictName();
    checkQName(name, cursor_, "element");
    requireS("after the element name");
    if (startsWith(cursor_, limit_, "EMPTY")) {
        cursor_ += 5;
    } else if (startsWith(cursor_, limit_, "ANY")) {
        cursor_ += 3;
    } else {
        if (atEnd() || *cursor_ != '(') errExpected(cursor_, "EMPTY, ANY or '('");
        readContentParticle(0);
    }
}

// A content model from its "(": names or nested groups joined by one kind of connector, with
// the occurrence marks; or mixed content, "#PCDATA" first.
void QzXmlReader::readContentParticle(int nesting) {
    ++cursor_;
    readS();
    if (nesting == 0 && startsWith(cursor_, limit_, "#PCDATA")) {
        cursor_ += 7;
        bool names = false;
        for (;;) {
            readS();
            if (atEnd()) prematureEof();
            if (*cursor_ == ')') break;
            if (*cursor_ != '|') errExpected(cursor_, "'|' or ')' in mixed content");
            ++cursor_;
            readS();
            const Byte* name = scanStrictName();
            checkQName(name, cursor_, "element");
            names = true;
        }
        ++cursor_;
        if (!atEnd() && *cursor_ == '*') {
            ++cursor_;
        } else if (names) {
            errExpected(cursor_, "'*' after mixed content that names elements");
        }
        return;
    }
    Byte connector = 0;
    for (;;) {
        if (!atEnd() && *cursor_ == '(') {
            readContentParticle(nesting + 1);
        } else {
            const Byte* name = scanStrictName();
            checkQName(name, cursor_, "element");
        }
        if (!atEnd() && (*cursor_ == '?' || *cursor_ == '*' || *cursor_ == '+')) ++cursor_;
        readS();
        if (atEnd()) prematureEof();
        if (*cursor_ == ')') break;
        if ((*cursor_ != '|' && *cursor_ != ',') || (connector != 0 && *cursor_ != connector)) {
            errExpected(cursor_, connector == 0     ? "'|', ',' or ')' in the content model"
                                 : connector == '|' ? "'|' or ')' in the choice"
                                                    : "',' or ')' in the sequence");
        }
        connector = *cursor_++;
        readS();
    }
    ++cursor_;
    if (!atEnd() && (*cursor_ == '?' || *cursor_ == '*' || *cursor_ == '+')) ++cursor_;
}

void QzXmlReader::readAttlistDecl() {
    requireS("after '<!ATTLIST'");
    const Byte* element = scanStrictName();
    checkQName(element, cursor_, "element");
    const std::string_view elementName(chars(element), cursor_ - element);
    for (;;) {
        const Byte* spaced = cursor_;
        readS();
        if (atEnd() || *cursor_ == '>') return;
        if (spaced == cursor_) errExpected(cursor_, "whitespace before the attribute name");
        const Byte* name = scanStrictName();
        checkQName(name, cursor_, "attribute");
        QzXmlDoctype::Attribute attribute;
        attribute.name.assign(chars(name), cursor_ - name);
        requireS("after the attribute name");
        readAttributeType(attribute.tokenized);
        requireS("after the attribute type");
        if (startsWith(cursor_, limit_, "#REQUIRED") || startsWith(cursor_, limit_, "#IMPLIED")) {
            cursor_ += *cursor_ == '#' && cursor_[1] == 'R' ? 9 : 8;
        } else {
            if (startsWith(cursor_, limit_, "#FIXED")) {
                cursor_ += 6;
                requireS("after #FIXED");
            }
            if (atEnd() || (*cursor_ != '"' && *cursor_ != '\'')) {
                errExpected(cursor_, "#REQUIRED, #IMPLIED, #FIXED or a quoted default value");
            }
            // The default is read as a value in a tag would be: references expanded (the
            // entities declared before it), whitespace normalised.
            StagedAttribute value{};
            value.name = name;
            const std::size_t mark = expandedValues_.length();
            readStrictAttributeValue(*cursor_++, value);
            if (attribute.tokenized) normalizeTokens(value);
            attribute.value =
                value.value ? std::string(chars(value.value), value.valueLength)
                            : expandedValues_.std().substr(value.valueStart, value.valueLength);
            expandedValues_.resize(mark);
            attribute.hasDefault = true;
        }
        if (!skippingDeclarations_) doctype_->declare(elementName, std::move(attribute));
    }
}

// CDATA, a tokenized type, NOTATION (names) or an enumeration (name tokens).
void QzXmlReader::readAttributeType(bool& tokenized) {
    static const char* const types[] = {"CDATA",    "IDREFS", "IDREF",    "ID",
                                        "ENTITIES", "ENTITY", "NMTOKENS", "NMTOKEN"};
    tokenized = true;
    for (const char* type : types) {
        const std::size_t length = std::strlen(type);
        if (static_cast<std::size_t>(limit_ - cursor_) >= length &&
            std::memcmp(cursor_, type, length) == 0) {
            cursor_ += length;
            tokenized = std::strcmp(type, "CDATA") != 0;
            return;
        }
    }
    const bool notation = startsWith(cursor_, limit_, "NOTATION");
    if (notation) {
        cursor_ += 8;
        requireS("after NOTATION");
    }
    if (atEnd() || *cursor_ != '(') errExpected(cursor_, "an attribute type");
    ++cursor_;
    for (;;) {
        readS();
        if (notation) {
            scanStrictName();
        } else {
            const Byte* token = cursor_;
            while (!atEnd() && (*cursor_ >= 0x80 || kAsciiNameByte[*cursor_])) {
                const Byte* at = cursor_;
                if (*at >= 0x80) skipCharacter(at);
                if (!QzXmlCharChecks::isNameChar(QzXmlCharChecks::decode(at))) break;
                cursor_ = const_cast<Byte*>(at);
            }
            if (cursor_ == token) errExpected(cursor_, "a name token");
        }
        readS();
        if (atEnd()) prematureEof();
        if (*cursor_ == ')') break;
        if (*cursor_ != '|') errExpected(cursor_, "'|' or ')' in the enumeration");
        ++cursor_;
    }
    ++cursor_;
}

void QzXmlReader::readEntityDecl() {
    requireS("after '<!ENTITY'");
    const bool parameter = !atEnd() && *cursor_ == '%';
    if (parameter) {
        ++cursor_;
        requireS("after '%'");
    }
    const Byte* name = scanStrictName();
    QzXmlDoctype::Entity entity;
    entity.name.assign(chars(name), cursor_ - name);
    if (entity.name.find(':') != std::string::npos) {
        errAt(name, "An entity name must not contain a colon");
    }
    requireS("after the entity name");
    if (!atEnd() && (*cursor_ == '"' || *cursor_ == '\'')) {
        readEntityValue(entity.replacement);
    } else if (startsWith(cursor_, limit_, "SYSTEM") || startsWith(cursor_, limit_, "PUBLIC")) {
        readStrictExternalId();
        entity.external = true;
        const Byte* spaced = cursor_;
        readS();
        if (startsWith(cursor_, limit_, "NDATA")) {
            if (parameter) errAt(cursor_, "A parameter entity cannot be unparsed (NDATA)");
            if (spaced == cursor_) errExpected(cursor_, "whitespace before NDATA");
            cursor_ += 5;
            requireS("after NDATA");
            const Byte* notation = scanStrictName();
            if (findColon(chars(notation), chars(cursor_)) != chars(cursor_)) {
                errAt(notation, "A notation name must not contain a colon");
            }
            entity.unparsed = true;
        }
    } else {
        errExpected(cursor_, "a quoted entity value, SYSTEM or PUBLIC");
    }
    if (skippingDeclarations_) return;
    static const char* const predefined[][2] = {
        {"lt", "&#60;"}, {"amp", "&#38;"}, {"gt", ">"}, {"apos", "'"}, {"quot", "\""}};
    for (const auto& p : predefined) {
        if (parameter || entity.name != p[0]) continue;
        // Declared again, a predefined entity must still mean its character.
        const std::string& text = entity.replacement;
        const char c = p[0][0] == 'l'   ? '<'
                       : p[0][0] == 'g' ? '>'
                       : p[0][1] == 'm' ? '&'
                       : p[0][0] == 'a' ? '\''
                                        : '"';
        const bool escaped = text == p[1] || text == "&#x" + std::to_string(0) ||
                             (text.size() > 3 && text[0] == '&' && text[1] == '#');
        if (entity.external || !(escaped || (c != '<' && c != '&' && text == std::string(1, c)))) {
            errAt(name, "The predefined entity '" + QzCString(entity.name) +
                            "' may be declared only as its own character");
        }
        return;
    }
    doctype_->declare(std::move(entity), parameter);
}

// An entity value: character references expanded, general entity references kept as they
// are (checked for form), parameter-entity references not allowed in the internal subset.
void QzXmlReader::readEntityValue(std::string& replacement) {
    const Byte quote = *cursor_++;
    for (;;) {
        const Byte* run = cursor_;
        while (!atEnd() && *cursor_ != quote && *cursor_ != '&' && *cursor_ != '%')
            ++cursor_;
        checkCharacters(run, cursor_);
        replacement.append(chars(run), cursor_ - run);
        if (atEnd()) errAt(cursor_, "Premature EOF: the entity value is not closed");
        const Byte b = *cursor_++;
        if (b == quote) return;
        if (b == '%') {
            errAt(cursor_ - 1,
                  "A parameter-entity reference is not allowed inside a declaration "
                  "of the internal subset");
        }
        const Byte* amp = cursor_ - 1;
        if (!atEnd() && *cursor_ == '#') {
            QzCString character;
            appendStrictReference(character, false);
            replacement.append(character.std());
        } else {
            scanStrictName();
            if (atEnd() || *cursor_ != ';') errExpected(cursor_, "';' to end the entity reference");
            ++cursor_;
            replacement.append(chars(amp), cursor_ - amp);
        }
    }
}

void QzXmlReader::readNotationDecl() {
    requireS("after '<!NOTATION'");
    const Byte* name = scanStrictName();
    if (findColon(chars(name), chars(cursor_)) != chars(cursor_)) {
        errAt(name, "A notation name must not contain a colon");
    }
    requireS("after the notation name");
    if (!startsWith(cursor_, limit_, "SYSTEM") && !startsWith(cursor_, limit_, "PUBLIC")) {
        errExpected(cursor_, "SYSTEM or PUBLIC");
    }
    readStrictExternalId(true);
}

// "Entity declared" is a well-formedness constraint unless declarations may lie where the
// reader does not go, in a document that is not standalone.
bool QzXmlReader::undeclaredIsError() const {
    return !entitiesRelaxed_ || declaredStandalone_ == "yes";
}

// Reads an entity's replacement text in place of the document until it ends.
void QzXmlReader::enterEntity(const Byte* reference, const void* entity, const std::string& text) {
    for (const InputFrame& frame : frames_) {
        if (frame.entity == entity) err("An entity refers to itself, directly or through others");
    }
    if (frames_.size() >= maxEntityDepth_) {
        errLimit(reference, "Entity nesting", "maxEntityDepth", maxEntityDepth_);
    }
    expandedLength_ += text.size();
    if (expandedLength_ > entityAmplificationThreshold_ &&
        expandedLength_ / std::max<std::size_t>(documentLength_, 1) >= maxEntityAmplification_) {
        errLimit(reference, "Entity expansion", "maxEntityAmplification", maxEntityAmplification_);
    }
    frames_.push_back({cursor_, limit_, documentBuffer_, reference, entity, depth_});
    // The replacement text is never written: the scanners only read through these pointers.
    Byte* first = reinterpret_cast<Byte*>(const_cast<char*>(text.data()));
    documentBuffer_ = cursor_ = first;
    limit_ = first + text.size();
}

// Back to where the entity was referenced, once its replacement text is read; false when
// no entity is being read. Elements started in an entity end in it.
bool QzXmlReader::leaveEntity() {
    if (frames_.empty()) return false;
    const InputFrame frame = frames_.back();
    if (depth_ != frame.depth) err("An element started in an entity does not end in it");
    frames_.pop_back();
    cursor_ = frame.cursor;
    limit_ = frame.limit;
    documentBuffer_ = frame.buffer;
    return true;
}

// ---- Tags

// Namespace constraints on the tag just read, whose declarations are in scope: qualified
// names, declared prefixes, legal declarations, attributes unique by name and by expanded name.
void QzXmlReader::checkStrictTag(const Byte* name, const Byte* nameEnd) {
    if (depth_ == (nodeType_ == StartTag ? 1 : 0)) rootSeen_ = true;
    std::size_t defaultDeclarations = 0;
    bool prefixed = false;
    for (const StagedAttribute& a : staged_) {
        if (a.localStart != 0) checkQName(a.name, a.name + a.nameLength, a.localStart, "attribute");
        if (!declares(a)) {
            prefixed = prefixed || a.localStart != 0;
            continue;
        }
        checkDeclaration(a);
        defaultDeclarations += a.localStart == 0;
    }
    // Filing merged attributes of one name: fewer were filed than read.
    if (view_.attributeCount_ != staged_.size() || defaultDeclarations > 1) {
        errRepeatedAttribute("the name");
    }
    // Only prefixed attributes other than declarations have namespaces to check.
    if (prefixed) checkAttributeNamespaces();
    // Names stay where they are: the document and the replacement texts outlive the reader's
    // reading of them.
    if (nodeType_ == StartTag) openNames_.emplace_back(chars(name), nameEnd - name);
}

// After the name is resolved: a prefix must be declared, and is never xmlns.
[[gnu::always_inline]] inline void QzXmlReader::checkElementPrefix(const Byte* name,
                                                                   const Byte* nameEnd) {
    const std::string_view prefix = view_.prefix();
    // Split at its first colon, the name is a qualified name when nothing is left over.
    if (prefix.empty()) {
        if (*name == ':') checkQName(name, nameEnd, "element");
        return;
    }
    checkQName(name, nameEnd, prefix.size() + 1, "element");
    if (view_.uri_.empty() || isXmlns(prefix.data(), prefix.size())) errElementPrefix(name);
}

void QzXmlReader::errElementPrefix(const Byte* name) {
    const std::string_view prefix = view_.prefix();
    if (isXmlns(prefix.data(), prefix.size())) {
        errAt(name, "The prefix 'xmlns' is reserved for namespace declarations");
    }
    errAt(name, "The namespace prefix '" + QzCString(std::string(prefix)) + "' of element '" +
                    QzCString(std::string(view_.qualifiedName_)) + "' is not declared");
}

// The filed attributes, sorted by local name: prefixes must be declared, and no two share a
// namespace and a local name.
void QzXmlReader::checkAttributeNamespaces() {
    const std::vector<QzXmlAttributeView>& filed = view_.attributes_;
    const std::size_t count = view_.attributeCount_;
    for (std::size_t i = 0; i < count; ++i) {
        const QzXmlAttributeView& a = filed[i];
        if (a.prefix.empty() || isXmlns(a.prefix.data(), a.prefix.size())) continue;
        if (a.uri.empty()) {
            errAt(placeOf(stagedNamed(a.qualifiedName)),
                  "The namespace prefix '" + QzCString(std::string(a.prefix)) + "' of attribute '" +
                      QzCString(std::string(a.qualifiedName)) + "' is not declared");
        }
        for (std::size_t j = i + 1; j < count && filed[j].localName == a.localName; ++j) {
            const QzXmlAttributeView& other = filed[j];
            if (other.uri == a.uri && !isXmlns(other.prefix.data(), other.prefix.size())) {
                errRepeatedAttribute("the namespace and local name");
            }
        }
    }
}

// The staged attribute filed under qualifiedName.
const QzXmlReader::StagedAttribute& QzXmlReader::stagedNamed(std::string_view qualifiedName) const {
    for (const StagedAttribute& a : staged_) {
        if (qualifiedName == std::string_view(chars(a.name), a.nameLength)) return a;
    }
    return staged_.front();
}

// Reports the first attribute, in document order, that repeats one before it by what says.
void QzXmlReader::errRepeatedAttribute(const char* what) {
    const bool byName = std::strcmp(what, "the name") == 0;
    for (std::size_t j = 1; j < staged_.size(); ++j) {
        const StagedAttribute& b = staged_[j];
        for (std::size_t i = 0; i < j; ++i) {
            const StagedAttribute& a = staged_[i];
            const std::string_view nameA(chars(a.name), a.nameLength);
            const std::string_view nameB(chars(b.name), b.nameLength);
            bool same = nameA == nameB || (byName && declares(a) && declares(b) &&
                                           a.localStart == 0 && b.localStart == 0);
            if (!byName && !same && a.localStart != 0 && b.localStart != 0 && !declares(a) &&
                !declares(b) && nameA.substr(a.localStart) == nameB.substr(b.localStart)) {
                same =
                    namespaceStack_.getURIForPrefix(QzCString(chars(a.name), a.localStart - 1)) ==
                    namespaceStack_.getURIForPrefix(QzCString(chars(b.name), b.localStart - 1));
            }
            if (same) {
                errAt(placeOf(b), "The attribute '" + QzCString(nameB.data(), nameB.size()) +
                                      "' repeats " + what + " of an attribute before it");
            }
        }
    }
    err(QzCString("An attribute repeats ") + what + " of another");
}
// xmlns is never declared; xml only with its own namespace, which no other prefix takes;
// the xmlns namespace is never bound; a prefix is never undeclared.
void QzXmlReader::checkDeclaration(const StagedAttribute& a) {
    const std::string_view value(a.valueText, a.valueLength);
    const std::string_view prefix =
        a.localStart != 0
            ? std::string_view(chars(a.name) + a.localStart, a.nameLength - a.localStart)
            : std::string_view();
    const std::string_view xmlNamespace(kXmlNamespace.data(), kXmlNamespace.length());
    const std::string_view xmlnsNamespace(kXmlnsNamespace.data(), kXmlnsNamespace.length());
    const char* problem = nullptr;
    if (prefix == "xmlns") {
        problem = "The prefix 'xmlns' cannot be declared";
    } else if (prefix == "xml" ? value != xmlNamespace : value == xmlNamespace) {
        problem =
            "The prefix 'xml' is bound to http://www.w3.org/XML/1998/namespace, and that "
            "namespace to no other prefix";
    } else if (value == xmlnsNamespace) {
        problem = "The namespace http://www.w3.org/2000/xmlns/ cannot be bound";
    } else if (!prefix.empty() && value.empty()) {
        problem = "A prefix cannot be undeclared: its namespace name must not be empty";
    }
    if (problem != nullptr) errAt(placeOf(a), problem);
}

// The name of an end tag, which must be the innermost open element's as written: compared
// with it straight away, which spares scanning a name known to be good.
const QzXmlReader::Byte* QzXmlReader::scanStrictEndTagName() {
    const Byte* name = cursor_;
    if (!openNames_.empty()) {
        const std::string_view open = openNames_.back();
        const std::size_t length = open.size();
        if (static_cast<std::size_t>(limit_ - name) > length &&
            sameBytes(chars(name), open.data(), length) && name[length] < 0x80 &&
            !kAsciiNameByte[name[length]] && (frames_.empty() || depth_ >= frames_.back().depth)) {
            cursor_ += length;
            openNames_.pop_back();
            return name;
        }
    }
    name = scanNameAs<true>();
    checkStrictEndTag(name, cursor_);
    return name;
}

// The end tag closes the innermost open element, by its name as written.
void QzXmlReader::checkStrictEndTag(const Byte* name, const Byte* nameEnd) {
    const std::string_view written(chars(name), nameEnd - name);
    if (openNames_.empty()) {
        errAt(name, "The end tag </" + QzCString(written.data(), written.size()) +
                        "> closes no open element");
    }
    const std::string_view open = openNames_.back();
    if (written.size() != open.size() ||
        !std::equal(written.begin(), written.end(), open.begin())) {
        errAt(name, "The end tag </" + QzCString(written.data(), written.size()) +
                        "> does not match the start tag <" + QzCString(open.data(), open.size()) +
                        ">");
    }
    // An entity's replacement text closes only elements it started.
    if (!frames_.empty() && depth_ < frames_.back().depth) {
        errAt(name, "The end tag </" + QzCString(written.data(), written.size()) +
                        "> closes an element started outside the entity");
    }
    openNames_.pop_back();
}

// The attributes the document type declares for the element being read: defaults for those
// the tag leaves out, and values of tokenized types normalised further.
void QzXmlReader::applyDeclaredAttributes() {
    const std::vector<QzXmlDoctype::Attribute>* declared = doctype_->attributes(tagName_);
    if (declared == nullptr) return;
    for (const QzXmlDoctype::Attribute& attribute : *declared) {
        StagedAttribute* given = nullptr;
        for (StagedAttribute& a : staged_) {
            if (a.nameLength == attribute.name.size() &&
                std::memcmp(a.name, attribute.name.data(), a.nameLength) == 0) {
                given = &a;
                break;
            }
        }
        if (given != nullptr) {
            if (attribute.tokenized) normalizeTokens(*given);
            continue;
        }
        if (!attribute.hasDefault) continue;
        StagedAttribute a{};
        a.name = reinterpret_cast<const Byte*>(attribute.name.data());
        a.nameLength = attribute.name.size();
        const std::size_t colon = attribute.name.find(':');
        a.localStart = colon == std::string::npos ? 0 : colon + 1;
        a.value = reinterpret_cast<const Byte*>(attribute.value.data());
        a.valueLength = attribute.value.size();
        staged_.push_back(a);
    }
}

// Leading and trailing spaces dropped, runs of spaces made one.
void QzXmlReader::normalizeTokens(StagedAttribute& attribute) {
    const std::string value =
        attribute.value ? std::string(chars(attribute.value), attribute.valueLength)
                        : expandedValues_.std().substr(attribute.valueStart, attribute.valueLength);
    attribute.value = nullptr;
    attribute.valueStart = expandedValues_.length();
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == ' ' && (expandedValues_.length() == attribute.valueStart ||
                                i + 1 == value.size() || value[i + 1] == ' ')) {
            continue;
        }
        expandedValues_ += value[i];
    }
    attribute.valueLength = expandedValues_.length() - attribute.valueStart;
}

// Where an error about an attribute is reported: its name, or the tag for a default, whose
// name lies in the declarations.
const QzXmlReader::Byte* QzXmlReader::placeOf(const StagedAttribute& attribute) const {
    const auto at = reinterpret_cast<std::uintptr_t>(attribute.name);
    const bool inText = at >= reinterpret_cast<std::uintptr_t>(documentBuffer_) &&
                        at < reinterpret_cast<std::uintptr_t>(limit_);
    return inText ? attribute.name : lastTagStart_;
}

// ---- Content

// After the root element only comments, processing instructions and whitespace may come.
bool QzXmlReader::strictEof() {
    while (atEnd() && leaveEntity()) {
    }
    if (depth_ > 0 || !rootSeen_) {
        if (!atEnd()) return false;
        if (!rootSeen_) errAt(cursor_, "The document has no root element");
        errAt(cursor_, "The document ends inside element <" +
                           QzCString(openNames_.back().data(), openNames_.back().size()) + ">");
    }
    while (readStrictMisc()) {
    }
    if (atEnd()) return true;
    errExpected(cursor_,
                "only comments, processing instructions and whitespace after the root "
                "element");
}

void QzXmlReader::readStrictNextNode() {
    if (depth_ == 0 && rootSeen_) {
        strictEof();
        prematureEof();
    }
    for (;;) {
        if (atEnd()) {
            if (leaveEntity()) continue;
            strictEof();
            prematureEof();
        }
        if (*cursor_ != '<') {
            readStrictContent();
            return;
        }
        const Byte* open = cursor_;
        const Byte second = limit_ - cursor_ >= 2 ? cursor_[1] : 0;
        if (second == '?') {
            cursor_ += 2;
            readStrictPI(open);
            logMarkup(open, false);
        } else if (second != '!') {
            lastTagStart_ = cursor_++;
            readTagAs<true>();
            return;
        } else if (startsWith(cursor_, limit_, "<!--")) {
            cursor_ += 4;
            readStrictComment(open);
            logMarkup(open, false);
        } else if (startsWith(cursor_, limit_, "<![CDATA[")) {
            readStrictContent();
            return;
        } else {
            errExpected(cursor_ + 2, "'--' or '[CDATA[' after '<!'");
        }
    }
}

// Text up to the next tag: references checked and expanded, CDATA sections taken as they
// are, comments and instructions skipped; "]]>" is not allowed in it.
void QzXmlReader::readStrictContent() {
    nodeType_ = Content;
    const Byte* start = cursor_;
    Byte* stop = scanStrictText(cursor_);
    // Most texts run straight to the next tag, as in the lenient reader.
    if (depth_ > 0 && limit_ - stop >= 2 && stop[0] == '<' && stop[1] != '?' && stop[1] != '!') {
        checkTextLength(start, stop - cursor_);
        viewText(cursor_, stop);
        cursor_ = stop;
        return;
    }
    startValue();
    for (;; stop = scanStrictText(cursor_)) {
        value_.append(chars(cursor_), stop - cursor_);
        cursor_ = stop;
        if (atEnd()) {
            if (leaveEntity()) continue;
            if (strictEof()) break;
        }
        if (*cursor_ == ']') {
            if (startsWith(cursor_, limit_, "]]>")) errAt(cursor_, "']]>' is not allowed in text");
            value_ += ']';
            ++cursor_;
        } else if (*cursor_ == '&') {
            ++cursor_;
            appendStrictReference(value_, false);
        } else if (!readStrictMarkupInContent()) {
            break;
        }
    }
    settleValue();
    if (depth_ == 0 && !QzXmlUtils::stripWhiteSpaceAndNewlines(value_, QzCString::both).empty()) {
        errAt(start, "Text is not allowed outside the root element");
    }
    checkTextLength(start, value_.length());
}

// With the cursor on a "<" inside text: reads a comment, instruction or CDATA section and
// answers true, or answers false for a tag.
bool QzXmlReader::readStrictMarkupInContent() {
    const Byte* open = cursor_;
    const Byte second = limit_ - cursor_ >= 2 ? cursor_[1] : 0;
    if (second != '?' && second != '!') return false;
    if (second == '?') {
        cursor_ += 2;
        readStrictPI(open);
        logMarkup(open, true);
    } else if (startsWith(cursor_, limit_, "<!--")) {
        cursor_ += 4;
        readStrictComment(open);
        logMarkup(open, true);
    } else if (startsWith(cursor_, limit_, "<![CDATA[")) {
        if (depth_ == 0) errAt(cursor_, "A CDATA section is not allowed outside the root element");
        cursor_ += 9;
        readStrictCDATA();
    } else if (limit_ - cursor_ >= 2 && cursor_[1] == '!') {
        errExpected(cursor_ + 2, "'--' or '[CDATA[' after '<!'");
    } else {
        return false;
    }
    return true;
}

// The cursor after "<!--"; no "--" before the closing "-->".
void QzXmlReader::readStrictComment(const Byte* open) {
    for (const Byte* p = cursor_;;) {
        const void* dash = std::memchr(p, '-', limit_ - p);
        if (dash == nullptr) errUnsettled(open, "The comment is not closed by '-->'");
        p = static_cast<const Byte*>(dash);
        if (limit_ - p >= 2 && p[1] == '-') {
            if (limit_ - p < 3 || p[2] != '>') errAt(p, "'--' is not allowed inside a comment");
            checkCharacters(cursor_, p);
            cursor_ = const_cast<Byte*>(p) + 3;
            return;
        }
        ++p;
    }
}

// The cursor after "<?"; the target is a name without colons and not "xml" in any case.
void QzXmlReader::readStrictPI(const Byte* open) {
    const Byte* target = scanStrictName();
    const std::size_t length = cursor_ - target;
    if (equalsIgnoringCase(target, length, "XML")) {
        errAt(open, std::memcmp(target, "xml", 3) == 0
                        ? "The XML declaration is allowed only at the start of the document"
                        : "Processing instruction targets 'xml' in any case are reserved");
    }
    if (findColon(chars(target), chars(cursor_)) != chars(cursor_)) {
        errAt(target, "A processing instruction target must not contain a colon");
    }
    if (startsWith(cursor_, limit_, "?>")) {
        cursor_ += 2;
        return;
    }
    if (atEnd() || !kWhitespace[*cursor_])
        errExpected(cursor_, "whitespace or '?>' after the target");
    for (const Byte* p = cursor_;;) {
        const void* q = std::memchr(p, '?', limit_ - p);
        if (q == nullptr) errUnsettled(open, "The processing instruction is not closed by '?>'");
        p = static_cast<const Byte*>(q) + 1;
        if (p < limit_ && *p == '>') {
            checkCharacters(cursor_, p - 1);
            cursor_ = const_cast<Byte*>(p) + 1;
            return;
        }
    }
}

// The cursor after "<![CDATA["; the section up to "]]>" is text as it stands.
void QzXmlReader::readStrictCDATA() {
    for (const Byte* p = cursor_;;) {
        const void* bracket = std::memchr(p, ']', limit_ - p);
        if (bracket == nullptr)
            errUnsettled(cursor_ - 9, "The CDATA section is not closed by ']]>'");
        p = static_cast<const Byte*>(bracket);
        if (startsWith(p, limit_, "]]>")) {
            checkCharacters(cursor_, p);
            value_.append(chars(cursor_), p - cursor_);
            cursor_ = const_cast<Byte*>(p) + 3;
            return;
        }
        ++p;
    }
}

// Values are normalised: each tab and line feed (line ends are line feeds already) becomes
// a space; references are expanded, a character reference to whitespace kept as it is.
void QzXmlReader::readStrictAttributeValue(Byte quote, StagedAttribute& attribute) {
    Byte* stop = scanStrictValue(cursor_, quote);
    if (takeValueInPlace(stop, quote, attribute)) return;
    attribute.valueStart = expandedValues_.length();
    // An entity's replacement text is read in place: its quotes are data, not the end.
    const std::size_t frames = frames_.size();
    for (;;) {
        expandedValues_.append(chars(cursor_), stop - cursor_);
        cursor_ = stop;
        if (atEnd()) {
            if (frames_.size() == frames) {
                errUnsettled(attribute.name, "The attribute value is not closed by its quote");
            }
            leaveEntity();
        } else {
            const Byte b = *cursor_++;
            if (b == quote && frames_.size() == frames) break;
            if (b == '<') errAt(cursor_ - 1, "'<' is not allowed in an attribute value");
            if (b == '&') {
                const std::size_t before = expandedValues_.length();
                appendStrictReference(expandedValues_, true);
                // Checked either way; kept as written when the caller asked for no expansion.
                if (!expandReferences_) {
                    while (frames_.size() > frames)
                        leaveEntity();
                    expandedValues_.resize(before);
                    expandedValues_.append(chars(stop), cursor_ - stop);
                }
            } else {
                expandedValues_ += b == quote ? static_cast<char>(b) : ' ';
            }
        }
        stop = scanStrictValue(cursor_, quote);
    }
    attribute.valueLength = expandedValues_.length() - attribute.valueStart;
}

// The cursor after "&": a character reference to a character XML allows, or a name and ";".
// The five predefined entities are expanded; another entity passes through as written when
// the document has a document type declaration that might declare it, and is an error
// otherwise.
void QzXmlReader::appendStrictReference(QzCString& out, bool inAttribute) {
    const Byte* amp = cursor_ - 1;
    if (!atEnd() && *cursor_ == '#') {
        ++cursor_;
        const bool hex = !atEnd() && *cursor_ == 'x';
        if (hex) ++cursor_;
        std::uint32_t value = 0;
        const Byte* digits = cursor_;
        for (; !atEnd(); ++cursor_) {
            const int digit = hex ? strictHexDigit(*cursor_)
                                  : (*cursor_ >= '0' && *cursor_ <= '9' ? *cursor_ - '0' : -1);
            if (digit < 0) break;
            value = std::min<std::uint32_t>(value * (hex ? 16 : 10) + digit, 0x110000);
        }
        if (cursor_ == digits) errExpected(cursor_, hex ? "hexadecimal digits" : "decimal digits");
        if (atEnd() || *cursor_ != ';') errExpected(cursor_, "';' to end the character reference");
        ++cursor_;
        if (!QzXmlCharChecks::isChar(value)) {
            errAt(amp, "The character reference " + QzCString(chars(amp), cursor_ - amp) +
                           " names a character XML does not allow");
        }
        appendCharacter(out, value);
        return;
    }
    // The predefined entities, most references of all, are names known to be good.
    const Byte* semicolon = cursor_;
    while (semicolon < limit_ && semicolon - cursor_ < 5 && *semicolon != ';')
        ++semicolon;
    if (semicolon < limit_ && *semicolon == ';' &&
        appendPredefined(out, cursor_, semicolon - cursor_)) {
        cursor_ = const_cast<Byte*>(semicolon) + 1;
        return;
    }
    const Byte* name = scanStrictName();
    const std::size_t length = cursor_ - name;
    if (atEnd() || *cursor_ != ';') errExpected(cursor_, "';' to end the entity reference");
    ++cursor_;
    const QzCString quotedName = "'" + QzCString(chars(name), length) + "'";
    const QzXmlDoctype::Entity* entity =
        doctype_ ? doctype_->find(std::string_view(chars(name), length), false) : nullptr;
    if (entity == nullptr) {
        if (!hasDoctype_) {
            errAt(amp, "The entity " + quotedName +
                           " is not declared: without a document type declaration only lt, gt, "
                           "amp, apos and quot are");
        }
        if (undeclaredIsError()) errAt(amp, "The entity " + quotedName + " is not declared");
        // Declared, perhaps, where the reader does not go: skipped, left as written.
        out.append(chars(amp), cursor_ - amp);
        return;
    }
    if (entity->unparsed) {
        errAt(amp, "The entity " + quotedName + " is unparsed (NDATA) and cannot be referenced");
    }
    if (entity->external) {
        if (inAttribute) {
            errAt(amp, "The external entity " + quotedName +
                           " cannot be referenced in an attribute value");
        }
        if (rejectExternalEntities_) {
            errAt(amp,
                  "The entity " + quotedName + " is external, and external entities are rejected");
        }
        out.append(chars(amp), cursor_ - amp);
        return;
    }
    enterEntity(amp, entity, entity->replacement);
    reserveForExpansion(out);
}

// Text that expansion makes large takes at once all the room the expansion limit lets it
// reach, rather than doubling, so that an attack never holds two large copies of it. Only
// when the threshold, not the ratio, bounds the expansion: the room is then small and fixed.
void QzXmlReader::reserveForExpansion(QzCString& out) const {
    const std::size_t pending = static_cast<std::size_t>(limit_ - cursor_);
    const std::size_t needed = out.length() + pending;
    if (needed <= out.capacity() || needed < (16 << 10) ||
        documentLength_ > entityAmplificationThreshold_ / maxEntityAmplification_) {
        return;
    }
    std::size_t room = pending + entityAmplificationThreshold_ -
                       std::min(expandedLength_, entityAmplificationThreshold_);
    for (const InputFrame& frame : frames_)
        room += static_cast<std::size_t>(frame.limit - frame.cursor);
    QzCString grown(out.length() + room);
    grown.append(out);
    out = std::move(grown);
}
