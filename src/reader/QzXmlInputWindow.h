#ifndef QZXMLINPUTWINDOW_H
#define QZXMLINPUTWINDOW_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "QzCString.h"

/// The part of a document a streaming reader holds: the bytes decoded to UTF-8 from where the
/// reader still needs them up to what has come in so far. Input comes from a stream, read a
/// chunk at a time, or is fed by the caller in pieces of any size. Bytes stay undecoded
/// (UTF-8 and every ASCII-compatible input) until the reader names the encoding to decode
/// them from; a character split between two pieces is decoded once it is whole.
class QzXmlInputWindow {
public:
    using Byte = unsigned char;

    /// A window over stream, reading chunk bytes at a time.
    QzXmlInputWindow(std::istream& stream, std::size_t chunk);
    /// A window over input the caller feeds.
    explicit QzXmlInputWindow(std::size_t chunk);
    ~QzXmlInputWindow();
    QzXmlInputWindow(const QzXmlInputWindow&) = delete;
    QzXmlInputWindow& operator=(const QzXmlInputWindow&) = delete;

    /// How the text an encoding name labels becomes UTF-8.
    enum class Decoding { None, Latin1, Utf16BE, Utf16LE, Charset };
    /// The decoding a name asks for, letters in either case: None for UTF-8 and US-ASCII, the
    /// built-in ones for ISO-8859-1 and UTF-16 (big-endian), UTF-16BE and UTF-16LE, ICU else.
    static Decoding decodingOf(const QzCString& encoding);

    /// Takes in no more than bytes of input: the stream is read no further.
    void limitInput(std::uint64_t bytes) noexcept { inputLimit_ = bytes; }
    /// Queues length bytes of fed input.
    void feed(const char* data, std::size_t length);
    /// No input comes after what was fed.
    void finish();

    /// The bytes held; pull, release and rewind move them.
    Byte* begin() noexcept { return reinterpret_cast<Byte*>(&held_[0]); }
    Byte* end() noexcept { return begin() + held_.size(); }
    /// Whether every byte of the input is held: nothing more will come.
    bool exhausted() const noexcept { return flushed_; }
    /// Bytes of input taken in so far, before any decoding.
    std::uint64_t bytesIn() const noexcept { return bytesIn_; }
    /// Decodes about a chunk more of input into the window; false when none is at hand (fed
    /// input not yet come, the end reached, or a failure that error() names).
    bool pull();
    /// Drops the bytes before keep, which must lie in the window.
    void release(const Byte* keep);

    /// Whether input still to come may fail to decode: a charset ICU decodes, or one byte
    /// outside a declared US-ASCII.
    bool mayRefuse() const noexcept;

    /// What stopped the input short (the stream failed, a byte did not decode, a byte the
    /// declared US-ASCII does not have), and where in the window; empty when nothing did.
    const QzCString& error() const noexcept { return error_; }
    std::size_t errorOffset() const noexcept { return errorOffset_; }

    /// From `from` on, the bytes held and all that come after are decoded from encoding:
    /// ISO-8859-1, UTF-16 (big-endian), UTF-16BE, UTF-16LE or any charset ICU knows. Bytes
    /// before from are dropped and positions count again from there. False, with error()
    /// set, when the charset is unknown or what is held does not decode.
    bool decodeFrom(const Byte* from, const QzCString& encoding);
    /// From `from` on, each CR LF pair and each lone CR becomes LF, in what is held and in all
    /// that comes after.
    void normalizeLineEndsFrom(const Byte* from);
    /// From `from` on, a byte from 0x80 is an error; false when one is held already.
    bool requireAsciiFrom(const Byte* from);

    /// A read that may be undone starts: rewind() puts back the bytes as they were before any
    /// decodeFrom, normalizeLineEndsFrom or requireAsciiFrom it made; pulls wait until after.
    void mark() noexcept {
        marked_ = true;
        saved_ = false;
    }
    /// True when there was something to put back: the bytes that lay at [oldBegin, oldEnd]
    /// at mark() now lie at begin().
    bool rewind(const Byte*& oldBegin, const Byte*& oldEnd);

    /// The bytes before the window that a line or column count must still take in: the
    /// line feeds dropped, and the bytes dropped since the last of them.
    std::uint64_t linesDropped() const noexcept { return linesDropped_; }
    std::uint64_t columnCarry() const noexcept { return columnCarry_; }

private:
    struct Stage;

    Stage& addStage(const Byte* from, bool keepBefore);
    bool transformHeld();
    bool decode(std::string& bytes, bool last);
    bool decodeBy(Stage& stage, std::string& bytes, std::string& out, bool last);
    static void decodeUtf16(Stage& stage, const std::string& bytes, std::string& out, bool last);
    bool decodeCharset(Stage& stage, const std::string& bytes, std::string& out, bool last);
    static void normalize(Stage& stage, const std::string& bytes, std::string& out, bool last);
    bool checkAscii(Stage& stage, std::string& text, std::size_t from, std::size_t base, bool last);

    std::istream* stream_;
    std::size_t chunk_;
    std::string held_;      ///< decoded bytes, UTF-8
    std::string raw_;       ///< fed bytes not yet taken in
    std::string scratch_;   ///< a stream's chunk, read before it is decoded
    std::string between_;   ///< what one decoding hands to the next
    bool ended_ = false;    ///< the stream or the feeding has ended
    bool flushed_ = false;  ///< ... and all of it is decoded into the window
    std::uint64_t bytesIn_ = 0;
    std::uint64_t inputLimit_ = UINT64_MAX;
    std::vector<std::unique_ptr<Stage>> stages_;
    std::uint64_t linesDropped_ = 0;
    std::uint64_t columnCarry_ = 0;
    QzCString error_;
    std::size_t errorOffset_ = 0;
    // What rewind() puts back, saved at the first change after mark().
    bool marked_ = false;
    bool saved_ = false;
    std::string savedHeld_;
    const Byte* savedBegin_ = nullptr;
    std::size_t savedStages_ = 0;
    std::uint64_t savedLines_ = 0;
    std::uint64_t savedCarry_ = 0;
    std::size_t pendingFrom_ = 0;  ///< where the stage being added starts in the window
    bool pendingKeep_ = false;     ///< ... and whether the bytes before it stay
};

#endif
