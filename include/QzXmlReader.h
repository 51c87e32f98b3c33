#ifndef QZXMLREADER_H
#define QZXMLREADER_H

#include "QzXmlExport.h"

#include <cstdint>
#include <deque>
#include <iosfwd>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "QzCString.h"
#include "QzXmlAttribute.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"
#include "QzXmlNamespaceStack.h"
#include "QzXmlNodeView.h"
#include "QzXmlReaderOptions.h"

class QzXmlDoctype;
class QzXmlInputWindow;
class QzXmlMarkupLog;
class Qzxmsg;

/// Pull parser over one document, held in memory or read from a stream a chunk at a time (the
/// stream constructor with options; QzXmlFeedReader takes input as the caller has it). The
/// constructor takes the input, decodes it to UTF-8 and reads the prolog, leaving the reader
/// on the root element; the caller then
/// walks the document with readNextNode or the element operations. Every syntax error throws
/// QzXmlParseError with the line and column reached (columns count bytes of the UTF-8 text).
/// getNodeView() shows the current node as views into the input, without copies; the owned
/// accessors copy a node's strings only when called. A reader is used by one thread at a
/// time and is not copyable; when it is destroyed, its working storage goes to the next
/// reader constructed in the same thread.
///
/// Constructed with QzXmlReaderOptions whose strict member is true, the reader is a
/// conforming XML 1.0 (fifth edition) and Namespaces processor: every well-formedness and
/// namespace constraint is checked, the internal subset's included; its internal entities are
/// expanded in text and values under the entity limits, declared defaults fill in attributes,
/// line ends and attribute values are normalised, and the xml prefix is bound. Nothing external
/// is fetched (see QzXmlReaderOptions::rejectExternalEntities). Its messages name what was
/// found and what was required; inside an entity's replacement text, the place is the
/// reference's.
class QZXML_API QzXmlReader {
public:
    /// Kind of the current node.
    enum NodeType { StartTag = 0, EndTag = 1, EmptyElement = 2, Content = 3, NoNode = 4 };

    /// The empty name; readElement(NullName) accepts any element.
    static const QzXmlName NullName;

    /// Reads the whole stream and its prolog; throws QzXmlParseError on malformed input.
    explicit QzXmlReader(std::istream& input);
    /// Copies the document and reads its prolog; throws QzXmlParseError on malformed input.
    explicit QzXmlReader(const QzCString& document);
    /// Reads the caller's buffer in place, without a copy: it must outlive the reader, and
    /// UTF-16 input is byte-swapped where it lies. Throws QzXmlParseError.
    QzXmlReader(unsigned char* buffer, unsigned long length);
    /// Reads the stream as options say, a chunk (options.chunkSize) at a time: memory is
    /// bounded by the largest node, not the document. Nodes, values, messages, lines and
    /// columns are those of the same document in memory, except that a byte the declared
    /// charset cannot decode, or one outside a declared US-ASCII, is reported where it is
    /// reached, and the entity amplification ratio is taken over the bytes read so far.
    QzXmlReader(std::istream& input, const QzXmlReaderOptions& options);
    /// Copies the document and reads it as options say.
    QzXmlReader(const QzCString& document, const QzXmlReaderOptions& options);
    /// Reads the caller's buffer in place as options say. A strict reader copies it first
    /// when its line ends need normalising.
    QzXmlReader(unsigned char* buffer, unsigned long length, const QzXmlReaderOptions& options);
    /// Releases the document buffer if the reader allocated it.
    ~QzXmlReader();
    QzXmlReader(const QzXmlReader&) = delete;
    QzXmlReader& operator=(const QzXmlReader&) = delete;

    /// True when at most one unread byte remains; outside the root element it first skips
    /// whitespace. A strict reader answers true only at the document's end, skipping the
    /// comments and instructions after the root element, and throws QzXmlParseError when
    /// the document ends inside an element or has anything else after its root.
    bool eof();
    /// Reads the next node of any kind (comments and processing instructions are skipped).
    void readNextNode();
    /// Whether the next node is a start or empty-element tag matching name; reads it ahead
    /// without consuming it. An empty URI in name stands for the URI of name's prefix.
    bool isElementNext(const QzXmlName& name);
    /// Reads the next start or empty-element tag, skipping text; "Couldn't find start tag".
    void readElementStart();
    /// The same, requiring the element to match name; returns its attributes.
    const QzXmlAttributeSet& readElementStart(const QzXmlName& name);
    /// The same with a qualified name resolved against the namespaces in scope.
    const QzXmlAttributeSet& readElementStart(const QzCString& name);
    /// The text of the current element with references expanded (empty for an empty
    /// element); the reference is valid until the next read.
    const QzCString& readElementValue();
    /// Reads the next end tag (or completes an empty element); "Couldn't find end tag".
    void readElementEnd();
    /// The same, requiring the end tag's name to equal name.
    void readElementEnd(const QzXmlName& name);
    /// The same with a qualified name resolved against the namespaces in scope.
    void readElementEnd(const QzCString& name);
    /// Reads a whole element and returns it as raw document text; an empty string, with the
    /// node left pending, when no element comes next.
    QzCString readElement(const QzXmlName& name = NullName);
    /// The same with a qualified name resolved against the namespaces in scope.
    QzCString readElement(const QzCString& name);

    /// Declares ns in the innermost scope, as if the document had declared it there.
    void addNamespace(const QzXmlNamespace& ns);
    /// Resolves a qualified name (prefix:local) against the namespaces in scope; an unknown
    /// prefix gets an empty URI.
    QzXmlName getXmlName(const QzCString& qualifiedName) const;

    /// Kind of the current node.
    NodeType getNodeType() const noexcept { return static_cast<NodeType>(nodeType_); }
    /// Resolved name of the tag read last. Copied out of the document only when first asked
    /// for, as are the attributes and the value.
    const QzXmlName& getCurrentName() const {
        nameShared_ = true;
        if (namePending_) fileName();
        return currentName_;
    }
    /// Attributes of the start tag read last, namespace declarations included.
    const QzXmlAttributeSet& getCurrentAttributes() const {
        attributesShared_ = true;
        if (attributesPending_) fileAttributes();
        return currentAttributes_;
    }
    /// Text of the content node read last.
    const QzCString& getValue() const {
        valueShared_ = true;
        if (valuePending_) fileValue();
        return value_;
    }
    /// The same name, attributes and text as views, without a copy; valid until the next
    /// read or addNamespace.
    const QzXmlNodeView& getNodeView() const noexcept { return view_; }
    /// Number of open elements.
    std::int32_t getDepth() const noexcept { return depth_; }
    /// Input encoding, as detected or declared.
    const QzCString& getEncodingName() const noexcept { return encodingName_; }
    /// The version of the XML declaration; empty without one.
    const QzCString& getDeclaredVersion() const noexcept { return declaredVersion_; }
    /// "yes" or "no" from the XML declaration; empty when it has no standalone.
    const QzCString& getDeclaredStandalone() const noexcept { return declaredStandalone_; }
    /// Whether the XML declaration named an encoding.
    bool isEncodingDeclared() const noexcept { return encodingDeclared_; }
    /// Whether the XML declaration carried standalone.
    bool isStandaloneDeclared() const noexcept { return standaloneDeclared_; }
    /// Whether a node was read ahead and is still to be consumed.
    bool isNodePending() const noexcept { return nodePending_; }
    /// Whether references in attribute values are expanded (true by default).
    bool getExpandReferences() const noexcept { return expandReferences_; }
    /// When false, an "&" in an attribute value is kept literally.
    void setExpandReferences(bool expand) noexcept { expandReferences_ = expand; }

private:
    using Byte = unsigned char;

    // The event parser reports its own unmatched-end-tag error at the reader's position.
    friend class QzXmlSAXParser;
    // Document comparison needs node positions and the comments and processing instructions
    // that reading skips.
    friend class QzXmlInfosetWalker;
    // The fed reader is this reader over a window it fills.
    friend class QzXmlFeedReader;

    // What a read through a window throws when fed input runs out before the node is whole.
    struct NeedInput {};
    // A reader over window that reads the prolog only at startDocument().
    QzXmlReader(std::unique_ptr<QzXmlInputWindow> window, const QzXmlReaderOptions& options);
    void startDocument();
    template <class Read>
    bool throughWindow(Read read);
    void takeInitialInput();
    void prepareRead();
    void topUp();
    void pullMore(std::ptrdiff_t wanted);
    std::ptrdiff_t ahead() const;
    std::ptrdiff_t retryAhead() const;
    bool mayHaveEnded() const;
    bool errorRepeated(const Qzxmsg& error);
    bool pullOnce();
    void moveWindowPointers(const Byte* oldBegin, const Byte* oldEnd, const Byte* newBegin);
    void detachOpenNames();
    void releaseConsumed();
    [[noreturn]] void failOnWindowError();
    template <class Copy>
    void eachNodeField(Copy copy);
    template <class Copy>
    void eachPrologField(Copy copy);
    void markState();
    void saveProlog();
    void restoreState();
    bool eofNow();
    bool eofThroughWindow();
    void readNextNodeThroughWindow();
    void readContentThroughWindow();
    std::ptrdiff_t lookAheadAfterNode() const;
    void transcodeWindow(const QzCString& encoding);

    /// Copies the document and reads its prolog, recording skipped markup in log when given.
    QzXmlReader(const QzCString& document, const QzXmlReaderOptions& options, QzXmlMarkupLog* log);
    void applyOptions(const QzXmlReaderOptions& options);
    struct Spares;
    static std::unique_ptr<Spares>& threadSpares();
    void trade(Spares& spares) noexcept;
    void takeSpares() noexcept;
    void leaveSpares() noexcept;
    void logMarkup(const Byte* open, bool inText);

    void adoptOwnedText();
    void readDocument();
    [[noreturn]] void err(const QzCString& message) const;
    [[noreturn]] void prematureEof();
    void requireBytes(std::ptrdiff_t count) const;
    [[noreturn]] void errInvalidBang(unsigned char third) const;
    bool atEnd() const noexcept { return cursor_ >= limit_; }
    Byte takeByte();
    void skipBytes(std::ptrdiff_t count);

    // Input decoding.
    void readAndProcessBOM();
    // Returns whether the text was converted (UTF-8 and US-ASCII only record the name).
    bool transcodeDocument(const QzCString& encoding);
    QzCString transcode8859_1() const;
    QzCString transcodeUTF16BE();
    QzCString transcodeUTF16LE();
    void swapUnitsInPlace();

    // Lexical primitives.
    void readS();
    const Byte* scanName();
    // The hot readers come in two forms: Checked for a strict reader or one with limits, the
    // other exactly the specified reading with nothing to test on the way.
    template <bool Checked>
    const Byte* scanNameAs();
    const Byte* scanNameRest(const Byte* start);
    void readName(QzCString& name);
    std::uint32_t decodeCharacter();

    // Prolog.
    void readProlog();
    bool readPIOrXmlDecl();
    void readXmlDecl();
    void skipToValue();
    Byte* findQuote();
    void readQuotedInto(QzCString& text);
    void readComment();
    void readDocTypeDecl();

    // Tags.
    // An attribute of the tag being read, as positions: its name lies in the document buffer,
    // its value there too unless references were expanded into expandedValues_.
    struct StagedAttribute {
        const Byte* name;
        std::size_t nameLength;
        std::size_t localStart;  ///< 0 without a prefix, else just after the first ":"
        const Byte* value;       ///< null when the value lies in expandedValues_
        std::size_t valueStart;  ///< offset in expandedValues_
        std::size_t valueLength;
        // Set once the tag is complete: the value's bytes and the URI the name sorts by.
        const char* valueText;
        const char* sortURI;
        std::size_t sortURILength;
    };
    template <bool Checked>
    void readTagAs();
    template <bool Checked>
    void readTagBodyAs();
    template <bool Checked>
    void readEndTagAs();
    template <bool Checked>
    void readAttributeAs();
    void readAttributeValue(Byte quote, StagedAttribute& attribute);
    bool takeValueInPlace(Byte* stop, Byte quote, StagedAttribute& attribute);
    void commitAttributes();
    static bool declares(const StagedAttribute& a);
    void declareNamespaces(std::size_t count);
    void bindXmlPrefix();
    void sortAttributes();
    void insertFrom(std::size_t sorted, std::size_t count);
    struct Run;
    void sortRuns(std::size_t count);
    bool loadHeads(const Run& run);
    void radixSortHeads(std::size_t first, std::size_t last);
    void sortByComparison(std::size_t first, std::size_t last);
    static int compareNames(const StagedAttribute& a, const StagedAttribute& b);
    void resolveName(const QzCString& qualifiedName, QzXmlName& name) const;

    // The current node: the view points into the input; the owned accessors copy from it
    // when first called, and the view is copied aside before what it points into goes.
    [[gnu::always_inline]] inline void viewName(const Byte* first, const Byte* last);
    [[gnu::always_inline]] inline void viewAttribute(QzXmlAttributeView& view,
                                                     const StagedAttribute& name,
                                                     const StagedAttribute& value);
    std::string_view uriOf(std::string_view prefix);
    [[gnu::always_inline]] inline void viewText(const Byte* first, const Byte* last);
    void startValue();
    [[gnu::always_inline]] inline void settleValue();
    void attributesChanged();
    void fileName() const;
    [[gnu::always_inline]] inline static void fileName(const QzXmlNodeView& view, QzXmlName& name);
    void fileAttributes() const;
    static void fileAttribute(QzXmlAttribute& filed, const QzXmlAttributeView& view);
    void fileValue() const;
    void detachView();
    bool currentNameIs(const QzCString& localName, const QzCString& uri) const;

    // Character data.
    void readContent();
    bool takePendingNode();
    template <bool Checked>
    void readContentAs();
    // Inlined into its dispatcher, so that the unchecked reading costs no extra call.
    template <bool Checked>
    [[gnu::always_inline]] inline void readNextNodeAs();
    bool readMarkupInContent();
    void appendReference(QzCString& out);
    std::uint64_t characterReference(const Byte* first, const Byte* last) const;
    void readCDATA();

    // Limits, in either mode.
    [[noreturn]] void errAt(const Byte* at, const QzCString& message);
    [[noreturn]] void errLimit(const Byte* at, const char* what, const char* limit,
                               std::size_t value);
    /// For an error that more input could change: a search for an end that did not find it.
    [[noreturn]] void errUnsettled(const Byte* at, const char* message);
    void checkNameLength(const Byte* start);
    void checkTextLength(const Byte* at, std::size_t length);

    // Strict reading: the same tokens, every constraint checked.
    void readStrictProlog();
    const Byte* readStrictXmlDecl();
    void readStrictEq();
    const Byte* readStrictLiteral(const char* what);
    void agreeOnEncoding(const QzCString& detected, bool utf8Mark, const Byte* at);
    void normalizeLineEnds();
    const Byte* skipCharacter(const Byte* p);
    void checkCharacters(const Byte* first, const Byte* last);
    [[gnu::always_inline]] inline Byte* scanStrictText(Byte* p);
    [[gnu::always_inline]] inline Byte* scanStrictValue(Byte* p, Byte quote);
    bool readStrictMisc();
    void readStrictDoctype(const Byte* open);
    void readStrictExternalId(bool publicOnlyAllowed = false);
    void requireS(const char* where);
    void readInternalSubset();
    void readMarkupDeclaration(const Byte* open);
    void readElementDecl();
    void readContentParticle(int nesting);
    void readAttlistDecl();
    void readAttributeType(bool& tokenized);
    void readEntityDecl();
    void readEntityValue(std::string& replacement);
    void readNotationDecl();
    void readParameterReference();
    bool undeclaredIsError() const;
    void applyDeclaredAttributes();
    void normalizeTokens(StagedAttribute& attribute);
    const Byte* placeOf(const StagedAttribute& attribute) const;
    void enterEntity(const Byte* reference, const void* entity, const std::string& text);
    void reserveForExpansion(QzCString& out) const;
    bool leaveEntity();
    const Byte* scanStrictName();
    void checkQName(const Byte* start, const Byte* end, const char* what);
    void checkQName(const Byte* start, const Byte* end, std::size_t localStart, const char* what);
    void checkQNameFully(const Byte* start, const Byte* end, std::size_t localStart,
                         const char* what);
    void checkStrictTag(const Byte* name, const Byte* nameEnd);
    void checkDeclaration(const StagedAttribute& a);
    void checkElementPrefix(const Byte* name, const Byte* nameEnd);
    [[noreturn]] void errElementPrefix(const Byte* name);
    void checkAttributeNamespaces();
    const StagedAttribute& stagedNamed(std::string_view qualifiedName) const;
    [[noreturn]] void errRepeatedAttribute(const char* what);
    const Byte* scanStrictEndTagName();
    void checkStrictEndTag(const Byte* name, const Byte* nameEnd);
    bool strictEof();
    [[gnu::always_inline]] inline void readStrictNextNode();
    void readStrictContent();
    bool readStrictMarkupInContent();
    void readStrictComment(const Byte* open);
    void readStrictPI(const Byte* open);
    void readStrictCDATA();
    void readStrictAttributeValue(Byte quote, StagedAttribute& attribute);
    void appendStrictReference(QzCString& out, bool inAttribute);
    [[noreturn]] void errExpected(const Byte* at, const char* wanted);

    // Navigation.
    bool matches(const QzXmlName& name) const;
    [[noreturn]] void errExpected(const QzXmlName& wanted) const;
    void readNodeAfterText();
    QzCString rebuildStartTag() const;

    // What readElement copies out of the document: positions in the current buffer, and the
    // text that lay in buffers replaced by a declaration met on the way.
    struct RawCopy {
        const Byte* start;   ///< copy start
        const Byte* inner;   ///< just after the start tag; null until it is read
        const Byte* buffer;  ///< the buffer the copy started in
        QzCString saved;
        QzCString innerSaved;
    };
    // Points rawCopy_ at a readElement's copy for as long as that call runs.
    struct RawCopyScope {
        RawCopyScope(RawCopy*& slot, RawCopy& copy) : slot_(slot) { slot_ = &copy; }
        ~RawCopyScope() { slot_ = nullptr; }
        RawCopy*& slot_;
    };
    void saveRawCopy();
    void rebaseRawCopy();

    Byte* cursor_ = nullptr;          ///< next unread byte
    Byte* documentBuffer_ = nullptr;  ///< first byte of the document
    Byte* limit_ = nullptr;           ///< one past the document's last byte
    bool ownsBuffer_ = false;         ///< documentBuffer_ is ownedText_'s storage
    QzCString ownedText_;             ///< the document, when the reader holds its own copy
    std::unique_ptr<QzXmlInputWindow> window_;  ///< the input, when it streams or is fed
    std::int32_t depth_ = 0;
    QzXmlNamespaceStack namespaceStack_;
    QzCString encodingName_;
    QzCString declaredVersion_;
    QzCString declaredStandalone_;
    bool encodingDeclared_ = false;
    bool standaloneDeclared_ = false;
    bool declarationDecoded_ = false;  ///< an XML declaration has had the text converted
    mutable QzXmlNodeView view_;
    mutable QzXmlName currentName_;
    mutable QzCString value_;
    mutable QzXmlAttributeSet currentAttributes_;
    mutable bool namePending_ = false;        ///< currentName_ is still to copy from view_
    mutable bool attributesPending_ = false;  ///< currentAttributes_ likewise
    mutable bool valuePending_ = false;       ///< value_ likewise
    // Once the caller holds one of them by reference, it sees each node as it is read.
    mutable bool nameShared_ = false;
    mutable bool attributesShared_ = false;
    mutable bool valueShared_ = false;
    bool attributesInScope_ = false;  ///< view_'s attribute URIs lie in namespace scopes
    std::vector<char> viewStore_;     ///< view_'s strings, once their source has gone
    std::vector<char> spareStore_;    ///< where the next copy is made, from viewStore_ maybe
    std::int32_t nodeType_ = NoNode;
    bool nodePending_ = false;
    bool expandReferences_ = true;
    QzXmlMarkupLog* markupLog_ = nullptr;  ///< where skipped comments and PIs go, if anywhere

    // Options. Limits not in force hold the largest value, so that each check is one compare.
    bool strict_ = false;
    bool checked_ = false;  ///< strict, or a limit in force
    bool prohibitDoctype_ = false;
    std::size_t maxAttributes_ = SIZE_MAX;
    std::size_t maxNameLength_ = SIZE_MAX;
    std::size_t maxTextLength_ = SIZE_MAX;
    std::size_t maxDocumentLength_ = SIZE_MAX;
    std::int64_t maxDepth_ = INT64_MAX;

    // Strict reading's state.
    bool rootSeen_ = false;                    ///< the root element has started
    bool hasDoctype_ = false;                  ///< references to undeclared entities pass through
    std::vector<std::string_view> openNames_;  ///< qualified names of the open elements

    // Declarations and entity expansion.
    std::unique_ptr<QzXmlDoctype> doctype_;
    // Where reading resumes after an entity's replacement text, which is read in place of the
    // document until it ends.
    struct InputFrame {
        Byte* cursor;
        Byte* limit;
        Byte* buffer;
        const Byte* reference;  ///< the "&" or "%" of the reference, where errors are placed
        const void* entity;     ///< the entity being read, to refuse recursion
        std::int32_t depth;     ///< the element depth at the reference
    };
    std::vector<InputFrame> frames_;
    std::string_view tagName_;           ///< the name of the start tag being read
    bool entitiesRelaxed_ = false;       ///< declarations may lie where they are not read
    bool skippingDeclarations_ = false;  ///< after an unread parameter entity
    bool rejectExternalEntities_ = true;
    std::size_t maxEntityDepth_ = SIZE_MAX;
    std::size_t maxEntityAmplification_ = SIZE_MAX;
    std::size_t entityAmplificationThreshold_ = SIZE_MAX;
    std::size_t documentLength_ = 0;  ///< bytes given, for the amplification limit
    std::size_t expandedLength_ = 0;  ///< bytes of replacement text read so far

    // Scratch reused from tag to tag, so that reading allocates only when a tag or text
    // outgrows what an earlier one needed.
    const Byte* lastTagStart_ = nullptr;   ///< the "<" of the tag read last
    RawCopy* rawCopy_ = nullptr;           ///< the copy of the readElement call running
    std::vector<StagedAttribute> staged_;  ///< attributes of the tag being read, in order
    QzCString expandedValues_;             ///< the tag's attribute values that held references
    // A staged attribute's place in the sort: eight bytes of its local name, its index.
    struct SortKey {
        std::uint64_t head;
        std::uint32_t index;
    };
    // Keys order_[first, last) whose local names agree on their first depth bytes.
    struct Run {
        std::size_t first;
        std::size_t last;
        std::size_t depth;
    };
    static constexpr std::size_t ShortTag = 8;   ///< sorted by insertion from here down
    static constexpr std::size_t ShortRun = 32;  ///< sorted by comparison from here down
    std::vector<SortKey> order_;                 ///< sort permutation of staged_, then spares
    std::vector<SortKey> sortScratch_;           ///< the radix sort's second buffer
    std::vector<Run> runs_;                      ///< runs still to sort

    // A read through a window that runs out of input is undone and made again with more:
    // what it may change is kept here first.
    struct StreamMark {
        Byte* cursor = nullptr;
        Byte* limit = nullptr;
        Byte* buffer = nullptr;
        std::vector<InputFrame> frames;
        std::int32_t depth = 0;
        bool rootSeen = false;
        std::size_t openNames = 0;
        std::string_view innermostName;
        std::size_t scopes = 0;
        std::size_t expandedLength = 0;
        // What the prolog sets, saved only before a declaration is read.
        bool prologSaved = false;
        bool hasDoctype = false;
        bool hadDeclarations = false;
        bool entitiesRelaxed = false;
        bool skippingDeclarations = false;
        bool encodingDeclared = false;
        bool standaloneDeclared = false;
        bool declarationDecoded = false;
        QzCString encodingName;
        QzCString declaredVersion;
        QzCString declaredStandalone;
    };
    StreamMark mark_;
    std::ptrdiff_t topUpAt_ = 32;         ///< input held ahead before each read
    std::ptrdiff_t lookAheadNeeded_ = 0;  ///< what the read just made must leave ahead
    std::ptrdiff_t triedAhead_ = -1;      ///< input ahead at the last try that ran out; -1: none
    bool errorUnsettled_ = false;         ///< the error just raised may change with more input
    std::string failedWith_;              ///< the error of the last try that failed, placed
    // Open names whose tags left the window; a deque, so that growing moves none of them.
    std::unique_ptr<std::deque<std::string>> detachedNames_;
};

#endif
