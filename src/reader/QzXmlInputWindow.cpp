#include "QzXmlInputWindow.h"

#include <unicode/ucnv.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstring>
#include <istream>

#include "QzMessage.h"
#include "QzUInit.h"
#include "QzUToUnicodeConverter.h"
#include "QzXmlCharChecks.h"
#include "QzXmlLineFeeds.h"
#include "Qzxmsg.h"
#include "qzfoundationmsg.h"

// One decoding of the chain from the input's bytes to UTF-8; a second one applies when a
// declaration names a charset for text already decoded. An ICU decoder stays open from piece
// to piece, so that a character split between two pieces is decoded whole.
struct QzXmlInputWindow::Stage {
    enum Kind { Latin1, Utf16BE, Utf16LE, Charset, LineEnds, Ascii };
    Kind kind = Latin1;
    QzCString encoding;
    std::string carry;  ///< bytes that do not yet make a whole character
    std::unique_ptr<QzUInit> init;
    std::unique_ptr<QzUToUnicodeConverter> converter;
    std::u16string units;
    bool loneSurrogate = false;  ///< met in what was decoded; reported once all of it has been
};

QzXmlInputWindow::QzXmlInputWindow(std::istream& stream, std::size_t chunk)
    : stream_(&stream), chunk_(std::max<std::size_t>(chunk, 1)) {}

QzXmlInputWindow::QzXmlInputWindow(std::size_t chunk)
    : stream_(nullptr), chunk_(std::max<std::size_t>(chunk, 1)) {}

QzXmlInputWindow::~QzXmlInputWindow() = default;

void QzXmlInputWindow::feed(const char* data, std::size_t length) {
    if (!ended_) raw_.append(data, length);
}

void QzXmlInputWindow::finish() {
    ended_ = true;
}

bool QzXmlInputWindow::pull() {
    if (flushed_ || !error_.empty()) return false;
    scratch_.clear();
    if (stream_ != nullptr) {
        // Undecoded input goes straight into the window; other input is decoded on the way.
        std::string& into = stages_.empty() ? held_ : scratch_;
        const std::size_t at = into.size();
        const auto want =
            static_cast<std::size_t>(std::min<std::uint64_t>(chunk_, inputLimit_ - bytesIn_));
        into.resize(at + want);
        stream_->read(&into[at], static_cast<std::streamsize>(want));
        const auto got = static_cast<std::size_t>(stream_->gcount());
        into.resize(at + got);
        bytesIn_ += got;
        // What was read before a failure is kept, so that the error stands after it.
        const bool failed = stream_->bad();
        if (!failed && (!*stream_ || bytesIn_ == inputLimit_)) ended_ = true;
        if (&into == &scratch_ && !decode(scratch_, ended_)) return false;
        if (failed) {
            error_ = "The input stream failed";
            errorOffset_ = held_.size();
            return false;
        }
    } else {
        if (raw_.empty() && !ended_) return false;
        scratch_.swap(raw_);
        bytesIn_ += scratch_.size();
        if (!decode(scratch_, ended_)) return false;
    }
    flushed_ = ended_;
    return true;
}

void QzXmlInputWindow::release(const Byte* keep) {
    const std::size_t dropped = static_cast<std::size_t>(keep - begin());
    if (dropped == 0) return;
    const char* first = held_.data();
    linesDropped_ += QzXmlLineFeeds::count(first, first + dropped);
    const auto* lastFeed = static_cast<const char*>(memrchr(first, '\n', dropped));
    columnCarry_ = lastFeed != nullptr ? static_cast<std::uint64_t>(first + dropped - lastFeed - 1)
                                       : columnCarry_ + dropped;
    held_.erase(0, dropped);
}

bool QzXmlInputWindow::mayRefuse() const noexcept {
    return !flushed_ && std::any_of(stages_.begin(), stages_.end(), [](const auto& stage) {
        return stage->kind == Stage::Charset || stage->kind == Stage::Ascii;
    });
}

bool QzXmlInputWindow::rewind(const Byte*& oldBegin, const Byte*& oldEnd) {
    marked_ = false;
    if (!saved_) return false;
    oldBegin = savedBegin_;
    oldEnd = savedBegin_ + savedHeld_.size();
    held_.swap(savedHeld_);
    stages_.resize(savedStages_);
    linesDropped_ = savedLines_;
    columnCarry_ = savedCarry_;
    error_ = QzCString();
    saved_ = false;
    return true;
}

// A stage that applies from `from` on; the bytes before it are kept or dropped.
QzXmlInputWindow::Stage& QzXmlInputWindow::addStage(const Byte* from, bool keepBefore) {
    if (marked_ && !saved_) {
        savedBegin_ = begin();
        savedHeld_ = held_;
        savedStages_ = stages_.size();
        savedLines_ = linesDropped_;
        savedCarry_ = columnCarry_;
        saved_ = true;
    }
    pendingFrom_ = static_cast<std::size_t>(from - begin());
    pendingKeep_ = keepBefore;
    stages_.push_back(std::make_unique<Stage>());
    return *stages_.back();
}

// Runs the newest stage over the held bytes from where addStage said.
bool QzXmlInputWindow::transformHeld() {
    std::string rest = held_.substr(pendingFrom_);
    held_.resize(pendingKeep_ ? pendingFrom_ : 0);
    if (!pendingKeep_) {
        linesDropped_ = 0;
        columnCarry_ = 0;
    }
    return decodeBy(*stages_.back(), rest, held_, flushed_);
}

QzXmlInputWindow::Decoding QzXmlInputWindow::decodingOf(const QzCString& encoding) {
    std::string upper = encoding.std();
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    if (upper == "UTF-8" || upper == "US-ASCII") return Decoding::None;
    if (upper == "ISO-8859-1") return Decoding::Latin1;
    if (upper == "UTF-16" || upper == "UTF-16BE") return Decoding::Utf16BE;
    if (upper == "UTF-16LE") return Decoding::Utf16LE;
    return Decoding::Charset;
}

bool QzXmlInputWindow::decodeFrom(const Byte* from, const QzCString& encoding) {
    Stage& stage = addStage(from, false);
    stage.encoding = encoding;
    const Decoding decoding = decodingOf(encoding);
    if (decoding == Decoding::Latin1) {
        stage.kind = Stage::Latin1;
    } else if (decoding == Decoding::Utf16BE) {
        stage.kind = Stage::Utf16BE;
    } else if (decoding == Decoding::Utf16LE) {
        stage.kind = Stage::Utf16LE;
    } else {
        stage.kind = Stage::Charset;
        try {
            stage.init = std::make_unique<QzUInit>();
            stage.converter = std::make_unique<QzUToUnicodeConverter>(encoding.c_str());
        } catch (const Qzxmsg& e) {
            error_ = QzCString("Couldn't transcode from input encoding '") + encoding +
                     QzCString("': Character set conversion failed: ") + QzCString(e.why());
            errorOffset_ = 0;
            stages_.pop_back();
            return false;
        }
    }
    return transformHeld();
}

void QzXmlInputWindow::normalizeLineEndsFrom(const Byte* from) {
    addStage(from, true).kind = Stage::LineEnds;
    transformHeld();
}

bool QzXmlInputWindow::requireAsciiFrom(const Byte* from) {
    addStage(from, true).kind = Stage::Ascii;
    return transformHeld();
}

// Appends bytes to the window as the chain of decodings makes them; what ends inside a
// character waits for the next piece unless last.
bool QzXmlInputWindow::decode(std::string& bytes, bool last) {
    if (stages_.empty()) {
        held_ += bytes;
        return true;
    }
    // Each decoding but the last writes to a scratch string; the last writes to the window.
    for (std::size_t i = 0; i + 1 < stages_.size(); ++i) {
        between_.clear();
        if (!decodeBy(*stages_[i], bytes, between_, last)) return false;
        bytes.swap(between_);
    }
    return decodeBy(*stages_.back(), bytes, held_, last);
}

bool QzXmlInputWindow::decodeBy(Stage& stage, std::string& bytes, std::string& out, bool last) {
    switch (stage.kind) {
        case Stage::LineEnds:
            normalize(stage, bytes, out, last);
            return true;
        case Stage::Ascii: {
            // An offending byte is placed where it will lie in the window.
            const std::size_t at = out.size();
            out += stage.carry;
            out += bytes;
            stage.carry.clear();
            return checkAscii(stage, out, at, &out == &held_ ? 0 : held_.size(), last);
        }
        case Stage::Latin1:
            out.reserve(out.size() + 2 * bytes.size());
            for (const char ch : bytes) {
                const auto b = static_cast<unsigned char>(ch);
                if (b < 0x80) {
                    out += ch;
                } else {
                    out += static_cast<char>(0xC0 | (b >> 6));
                    out += static_cast<char>(0x80 | (b & 0x3F));
                }
            }
            return true;
        case Stage::Utf16BE:
        case Stage::Utf16LE:
            decodeUtf16(stage, bytes, out, last);
            return true;
        case Stage::Charset:
            return decodeCharset(stage, bytes, out, last);
    }
    return true;
}

// As the in-memory reader decodes: a lone surrogate becomes three bytes, an odd last byte is
// dropped. A high surrogate at the end of a piece waits for the unit after it.
void QzXmlInputWindow::decodeUtf16(Stage& stage, const std::string& bytes, std::string& out,
                                   bool last) {
    std::string& in = stage.carry;
    in += bytes;
    const auto* p = reinterpret_cast<const unsigned char*>(in.data());
    const std::size_t units = in.size() / 2;
    const bool big = stage.kind == Stage::Utf16BE;
    const auto unitAt = [p, big](std::size_t i) {
        return big ? static_cast<std::uint32_t>(p[2 * i] << 8 | p[2 * i + 1])
                   : static_cast<std::uint32_t>(p[2 * i + 1] << 8 | p[2 * i]);
    };
    out.reserve(out.size() + in.size());
    const std::size_t taken = QzXmlCharChecks::appendUtf16(out, units, unitAt, last);
    in.erase(0, last ? in.size() : 2 * taken);
}

bool QzXmlInputWindow::decodeCharset(Stage& stage, const std::string& bytes, std::string& out,
                                     bool last) {
    UConverter* cnv = stage.converter->handle();
    std::u16string& units = stage.units;
    // A lead surrogate that ended the last piece's units comes first.
    const std::size_t held = units.size() == 1 ? 1 : 0;
    units.resize(held + bytes.size() * 2 + 16);
    const char* source = bytes.data();
    char16_t* target = &units[held];
    UErrorCode status = U_ZERO_ERROR;
    ucnv_toUnicode(cnv, &target, &units[0] + units.size(), &source, source + bytes.size(), nullptr,
                   last, &status);
    auto count = static_cast<int32_t>(target - &units[0]);
    // A surrogate pair that the end of a piece parts is converted once whole.
    const bool leadLast = !last && count > 0 && U16_IS_LEAD(units[count - 1]);
    // A lone surrogate is what the in-memory conversion refuses, once the whole input has
    // decoded: it is held as U+FFFD until then, so that a decoding failure after it comes first.
    int32_t length = 0;
    int32_t lone = 0;
    UErrorCode converted = U_ZERO_ERROR;
    u_strToUTF8WithSub(nullptr, 0, &length, units.data(), count - leadLast, 0xFFFD, &lone,
                       &converted);
    stage.loneSurrogate = stage.loneSurrogate || lone > 0;
    if (U_SUCCESS(status) && last && stage.loneSurrogate) status = U_ILLEGAL_CHAR_FOUND;
    if (U_FAILURE(status)) {
        const Qzxmsg failure(QzMessage(&QZFOUNDATIONMSG_CONVERSION, u_errorName(status)));
        error_ = QzCString("Couldn't transcode from input encoding '") + stage.encoding +
                 QzCString("': Character set conversion failed: ") + QzCString(failure.why());
        errorOffset_ = held_.size();
        return false;
    }
    const std::size_t at = out.size();
    out.resize(at + static_cast<std::size_t>(length));
    converted = U_ZERO_ERROR;
    u_strToUTF8WithSub(&out[at], length, &length, units.data(), count - leadLast, 0xFFFD, nullptr,
                       &converted);
    if (leadLast) {
        units.assign(1, units[count - 1]);
    } else {
        units.clear();
    }
    return true;
}

// CR LF and a lone CR become LF; a CR at the end of a piece waits to see what follows it.
void QzXmlInputWindow::normalize(Stage& stage, const std::string& bytes, std::string& out,
                                 bool last) {
    const char* p = bytes.data();
    const char* const end = p + bytes.size();
    if (!stage.carry.empty()) {
        if (p == end && !last) return;
        stage.carry.clear();
        out += '\n';
        if (p < end && *p == '\n') ++p;
    }
    while (p < end) {
        const auto* cr = static_cast<const char*>(std::memchr(p, '\r', end - p));
        if (cr == nullptr) {
            out.append(p, end - p);
            return;
        }
        out.append(p, cr - p);
        if (cr + 1 == end && !last) {
            stage.carry = "\r";
            return;
        }
        out += '\n';
        p = cr + 1;
        if (p < end && *p == '\n') ++p;
    }
}

// The bytes of text from `from` on, which will lie at base + their place in the window. A
// character that the end of a piece cuts waits for the rest, so that it is named whole.
bool QzXmlInputWindow::checkAscii(Stage& stage, std::string& text, std::size_t from,
                                  std::size_t base, bool last) {
    for (std::size_t i = from; i < text.size(); ++i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead >= 0x80) {
            const auto length = static_cast<std::size_t>(QzXmlCharChecks::leadLength(lead));
            if (!last && text.size() - i < length) {
                stage.carry.assign(text, i, std::string::npos);
                text.resize(i);
                return true;
            }
            const auto* p = reinterpret_cast<const Byte*>(text.data()) + i;
            error_ = "The encoding is US-ASCII, but the document holds " +
                     QzXmlCharChecks::describe(p, p + (text.size() - i));
            errorOffset_ = base + i;
            return false;
        }
    }
    return true;
}
