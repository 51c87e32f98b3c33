// The streaming reader and the fed reader against the in-memory reader: every document of
// the tests and of the W3C suite, strict and lenient, read in chunks and fed in pieces of
// 1, 2, 3, 7, 64 and 4096 bytes, gives the same nodes, values, errors, lines and columns,
// read through the owned accessors or through node views.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <iterator>
#include <set>

#include "ThreeWayReading.h"

namespace {

using three_way::Access;

const std::size_t kSizes[] = {1, 2, 3, 7, 64, 4096};

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

QzXmlReaderOptions mode(bool strict) {
    QzXmlReaderOptions options;
    options.strict = strict;
    return options;
}

// Where a streaming read may part from the in-memory one by design: a byte the declared
// charset cannot decode, or one outside a declared US-ASCII, is met where it lies rather
// than when the declaration is read. The messages stay the same.
bool reportedWhereMet(const std::vector<std::string>& trace) {
    const std::string& last = trace.back();
    return last.find("Couldn't transcode") != std::string::npos ||
           last.find("The encoding is US-ASCII") != std::string::npos;
}

// Checks one document every way; returns the number of readings that disagreed.
int checkDocument(const std::string& name, const std::string& document) {
    int failures = 0;
    for (const bool strict : {false, true}) {
        const std::vector<std::string> expected = three_way::inMemory(document, mode(strict));
        const std::string viewed = three_way::firstDifference(
            expected, three_way::inMemory(document, mode(strict), Access::Views));
        if (!viewed.empty()) {
            ++failures;
            ADD_FAILURE() << name << (strict ? " strict" : " lenient") << " viewed: " << viewed;
        }
        for (const std::size_t size : kSizes) {
            for (const bool feeding : {false, true}) {
                // Half the readings go through views: small chunks streamed, larger ones fed.
                const Access access = feeding == (size % 2 == 0) ? Access::Views : Access::Owned;
                const std::vector<std::string> got =
                    feeding ? three_way::fed(document, mode(strict), size, access)
                            : three_way::streamed(document, mode(strict), size, access);
                if (reportedWhereMet(expected)) {
                    const auto message = [](const std::string& line) {
                        const std::size_t space = line.find(' ', 6);
                        return space == std::string::npos ? line : line.substr(space);
                    };
                    if (message(got.back()) == message(expected.back())) continue;
                }
                const std::string difference = three_way::firstDifference(expected, got);
                if (difference.empty()) continue;
                ++failures;
                ADD_FAILURE() << name << (strict ? " strict" : " lenient")
                              << (feeding ? " fed by " : " streamed by ") << size << ": "
                              << difference;
                if (failures > 3) return failures;
            }
        }
    }
    return failures;
}

TEST(QzXmlStreaming, ReadsTheRepositoryDocumentsAsInMemory) {
    int documents = 0;
    for (const std::string dir : {"/tests/data", "/examples"}) {
        const std::string path = std::string(QZXML_SOURCE_DIR) + dir;
        DIR* d = opendir(path.c_str());
        ASSERT_NE(d, nullptr) << path;
        std::set<std::string> names;
        while (const dirent* entry = readdir(d)) {
            const std::string file = entry->d_name;
            if (file.size() > 4 && file.compare(file.size() - 4, 4, ".xml") == 0)
                names.insert(path + "/" + file);
        }
        closedir(d);
        for (const std::string& file : names) {
            checkDocument(file, readFile(file));
            ++documents;
        }
    }
    EXPECT_GE(documents, 8);
}

TEST(QzXmlStreaming, ReadsTheConformanceSuiteAsInMemory) {
    const std::string root = std::string(QZXML_TESTDATA_DIR) + "/xmlconf/";
    std::ifstream index(root + "INDEX.tsv");
    if (!index) GTEST_SKIP() << "no conformance suite at " << root;
    int documents = 0;
    int failing = 0;
    for (std::string line; std::getline(index, line);) {
        const std::string path = line.substr(0, line.find('\t'));
        std::ifstream probe(root + path);
        if (!probe) continue;
        ++documents;
        if (checkDocument(path, readFile(root + path)) > 0 && ++failing >= 20) break;
    }
    EXPECT_GE(documents, 1900);
}

}  // namespace

namespace {

std::string utf16le(const std::u16string& text) {
    std::string out = "\xFF\xFE";
    for (const char16_t unit : text) {
        out += static_cast<char>(unit & 0xFF);
        out += static_cast<char>(unit >> 8);
    }
    return out;
}

// A stream that hands out its text and then fails, as a broken pipe or disk would.
class FailingBuffer : public std::streambuf {
public:
    explicit FailingBuffer(std::string text) : text_(std::move(text)) {
        setg(&text_[0], &text_[0], &text_[0] + text_.size());
    }

protected:
    int_type underflow() override { throw std::runtime_error("read failed"); }

private:
    std::string text_;
};

// A document of many records behind a head, handed out a record at a time, counting what
// the reader has taken.
class RecordStream : public std::streambuf {
public:
    RecordStream(std::string head, std::string tail, std::size_t records)
        : text_(std::move(head)), tail_(std::move(tail)), left_(records) {
        setg(&text_[0], &text_[0], &text_[0] + text_.size());
    }
    std::size_t taken() const { return taken_ + (gptr() - eback()); }
    static std::string record() { return "<x n='1'/>"; }

protected:
    int_type underflow() override {
        if (left_ == 0 && tail_.empty()) return traits_type::eof();
        taken_ += text_.size();
        if (left_ > 0) {
            --left_;
            text_ = record();
        } else {
            text_ = std::move(tail_);
            tail_.clear();
        }
        setg(&text_[0], &text_[0], &text_[0] + text_.size());
        return traits_type::to_int_type(text_[0]);
    }

private:
    std::string text_;
    std::string tail_;
    std::size_t left_;
    std::size_t taken_ = 0;
};

}  // namespace

// An error near the start of a long stream is reported from the input around it, as in memory:
// a broken document is not read to its end first. An unclosed comment, which more input may
// close yet, is read on until it closes.
TEST(QzXmlStreaming, AnErrorStandsWithoutTheRestOfTheInput) {
    constexpr std::size_t kRecords = 50000;
    std::string records;
    for (std::size_t i = 0; i < kRecords; ++i)
        records += RecordStream::record();
    struct Case {
        bool strict;
        std::string head;
        std::string tail;
        std::size_t maxTaken;
    };
    const Case cases[] = {
        {false, "<r>\n<a =\"x\">", "</r>", 8 * 4096},
        {true, "<r>\n<a>\n</b>", "</r>", 8 * 4096},
        {true, "<r><a b='1' b='2'/>", "</r>", 8 * 4096},
        {true, "<r>\n<!-- ", " --></r>", SIZE_MAX},
        // A name cut by the window's end says nothing of its colon before the rest comes.
        {true, "<r><?x:" + std::string(40000, 'E') + "\xFF", "</r>", 40 * 4096},
    };
    for (const Case& c : cases) {
        QzXmlReaderOptions options = mode(c.strict);
        options.chunkSize = 4096;
        const std::vector<std::string> expected =
            three_way::inMemory(c.head + records + c.tail, options);
        RecordStream input(c.head, c.tail, kRecords);
        std::istream stream(&input);
        const std::vector<std::string> got = three_way::walk(
            [&] { return std::make_unique<QzXmlReader>(stream, options); }, Access::Owned);
        EXPECT_EQ(three_way::firstDifference(expected, got), "") << c.head;
        EXPECT_LE(input.taken(), c.maxTaken) << c.head;
        // Fed, the error comes a few pieces after the one that holds it.
        const std::string document = c.head + records;
        QzXmlFeedReader reader(options);
        std::string trace = "no error";
        try {
            for (std::size_t at = 0; at < 40 * 4096; at += 4096) {
                reader.feed(document.data() + at, 4096);
                while (reader.next() == QzXmlFeedReader::Result::Node) {
                }
            }
        } catch (const QzXmlParseError& e) {
            trace = three_way::errorLine(e);
        }
        EXPECT_EQ(trace, c.maxTaken == SIZE_MAX ? "no error" : expected.back()) << c.head;
    }
    // Input that may yet fail to decode is read on to the failure, which is what the in-memory
    // reader reports first, whatever kind of error comes before it.
    for (const char* head : {"<r>\n<a>\n</b>", "<r>&;"}) {
        const std::string declared = std::string("<?xml version='1.0' encoding='UTF-7'?>") + head;
        RecordStream input(declared, "\xFF</r>", kRecords);
        std::istream stream(&input);
        const std::vector<std::string> got = three_way::walk(
            [&] { return std::make_unique<QzXmlReader>(stream, mode(false)); }, Access::Owned);
        EXPECT_NE(got.back().find("Couldn't transcode from input encoding 'UTF-7'"),
                  std::string::npos)
            << got.back();
    }
}

// Each document puts a character, a line end, a reference or a declaration across chunk
// edges at every offset.
TEST(QzXmlStreaming, SplitsAtEveryEdge) {
    const std::vector<std::string> documents = {
        "<a>caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80</a>",
        "<a>one\r\ntwo\rthree\r\n</a>\r\n",
        "<a><![CDATA[x]]y]]>]]></a>",
        "<a>x]]>y</a>",
        "<a b='&amp;&#x1F600;&lt;'>&gt;&#233;&quot;</a>",
        "<!DOCTYPE a [<!ENTITY e 'x<b>&#38;amp;</b>y'>]><a>1&e;2&e;</a>",
        utf16le(u"<a>\U0001F600\U0001F601 z\u00E9</a>"),
        "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9\xE8</a>",
        "<?xml version='1.0' encoding='windows-1252'?><a>\x80\x93\xE9</a>",
        "<?xml version='1.0' encoding='US-ASCII'?><a>ok</a>",
        "<?xml version='1.0' encoding='UTF-7'?><a>+2D3eAA- x +2D3eAdg93gE-</a>",
        "<a>\xC3</a>",
        "<a></b>",
    };
    for (const std::string& document : documents) {
        for (const bool strict : {false, true}) {
            const std::vector<std::string> expected = three_way::inMemory(document, mode(strict));
            for (std::size_t size = 1; size <= 9; ++size) {
                EXPECT_EQ(three_way::firstDifference(
                              expected, three_way::streamed(document, mode(strict), size)),
                          "")
                    << document << " streamed by " << size;
                EXPECT_EQ(three_way::firstDifference(expected,
                                                     three_way::fed(document, mode(strict), size)),
                          "")
                    << document << " fed by " << size;
            }
        }
    }
    // A character outside a declared US-ASCII is named whole wherever a chunk cuts it.
    const std::string ascii = "<?xml version='1.0' encoding='US-ASCII'?>\n<a>" +
                              std::string(40, 'x') + "\xEF\xBB\xBF</a>";
    EXPECT_EQ(checkDocument("US-ASCII", ascii), 0);
    // A lone surrogate out of a charset ICU decodes fails as the in-memory conversion does.
    const std::string lone =
        "<?xml version='1.0' encoding='UTF-7'?>\n<a>" + std::string(40, 'x') + "+2D0-</a>";
    EXPECT_EQ(checkDocument("UTF-7", lone), 0);
    // ... unless bytes after it fail to decode, which the whole conversion meets first: here
    // the last run of base64 holds a lone surrogate and ends inside a character.
    EXPECT_EQ(checkDocument("UTF-7 cut short",
                            "<?xml version=\"1.0\" encoding=\"UTF-7\"?>\n"
                            "<feed x/Atom\" xmlns:meP1Y2M+3DT4H5M6N11QzXmlRead"),
              0);
}

TEST(QzXmlStreaming, AFailingStreamIsAnError) {
    std::string document = "<a>\n";
    for (int i = 0; i < 100; ++i)
        document += "<b>one</b>\n";
    FailingBuffer buffer(document + "<c>tw");
    std::istream input(&buffer);
    QzXmlReaderOptions options;
    options.chunkSize = 4;
    std::size_t nodes = 0;
    try {
        QzXmlReader reader(input, options);
        while (!reader.eof()) {
            reader.readNextNode();
            ++nodes;
        }
        FAIL() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_EQ(three_way::errorLine(e), "error 102:5 The input stream failed");
    }
    // The nodes before the failure were read; nothing after it passed for the end.
    EXPECT_GE(nodes, 150u);
    EXPECT_LT(nodes, 402u);
}

TEST(QzXmlStreaming, ReadElementLargerThanTheChunk) {
    std::string big;
    for (int i = 0; i < 500; ++i)
        big += "<i n='" + std::to_string(i) + "'>&amp;" + std::to_string(i) + "</i>\n";
    const std::string document = "<r>\n<big>" + big + "</big><after/></r>";
    QzXmlReader inMemory{QzCString(document)};
    std::istringstream input(document);
    QzXmlReaderOptions options;
    options.chunkSize = 64;
    QzXmlReader streamed(input, options);
    for (QzXmlReader* reader : {&inMemory, &streamed}) {
        reader->readElementStart(QzCString("r"));
        const QzCString element = reader->readElement(QzCString("big"));
        EXPECT_EQ(element.std(), "\n<big>" + big + "</big>");
        EXPECT_TRUE(reader->isElementNext(reader->getXmlName(QzCString("after"))));
    }
}

// A fed reader hands out each node once its end has come, without waiting for more input:
// what a protocol that answers each message before the next one needs.
TEST(QzXmlStreaming, FedNodesComeAsSoonAsTheyAreWhole) {
    QzXmlFeedReader reader;
    std::string seen;
    const auto drain = [&] {
        for (QzXmlFeedReader::Result r;
             (r = reader.next()) != QzXmlFeedReader::Result::NeedInput;) {
            if (r == QzXmlFeedReader::Result::End) return seen += " End";
            seen += " " + three_way::nodeLine(reader, Access::Views);
        }
        return seen += " |";
    };
    const std::string stream = "<stream><msg to='a'>hi</msg>";
    reader.feed(stream.data(), stream.size());
    const std::string first = " 0 d1 <stream{} 0 d2 <msg{} to{}=[a] 3 d2 [hi] 1 d1 </msg{} |";
    EXPECT_EQ(drain(), first);
    reader.feed("<msg", 4);
    EXPECT_EQ(drain(), first + " |");
    reader.feed("/></stream>", 11);
    reader.finish();
    seen.clear();
    EXPECT_EQ(drain(), " 2 d1 <msg{} 1 d0 </stream{} End");
    EXPECT_EQ(reader.next(), QzXmlFeedReader::Result::End);
}
