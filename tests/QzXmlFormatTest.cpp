// "qzxml format" must keep what a document says: formatted, every document of the test data
// and every well-formed document of the W3C suite compares equal to its original, and a
// second formatting changes nothing.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Formatter.h"
#include "QzXmlParseError.h"
#include "QzXmlSAXParser.h"
#include "QzXmlStringWriter.h"
#include "QzXmlUtils.h"
#include "Qzxmsg.h"
#include "TextHolders.h"

namespace {

const std::string TestData = std::string(QZXML_TESTDATA_DIR) + "/";
const std::string ToolData = std::string(QZXML_TOOL_TESTDATA_DIR) + "/";

// The tool reads strictly unless told otherwise.
QzXmlReaderOptions strictReading() {
    QzXmlReaderOptions options;
    options.strict = true;
    return options;
}

bool parse(const QzCString& document, QzXmlContentHandler& handler,
           const QzXmlReaderOptions& options) {
    QzXmlSAXParser parser;
    parser.setContentHandler(&handler);
    parser.setReaderOptions(options);
    try {
        parser.parse(document);
        return true;
    } catch (const QzXmlParseError&) {
    } catch (const Qzxmsg&) {
    }
    return false;
}

// The document formatted as the tool formats it; false when the tool would refuse it.
bool format(const QzCString& document, QzCString& out, unsigned indent = 2,
            bool keepWhitespace = false, const QzXmlReaderOptions& options = strictReading()) {
    TextHolders holders;
    if (!parse(document, holders, options) || !holders.open.empty()) return false;
    QzXmlStringWriter writer;
    Formatter formatter(writer, holders.verbatim, indent, keepWhitespace);
    if (!parse(document, formatter, options)) return false;
    formatter.finish();
    out = writer.getString();
    return true;
}

std::string formatted(const std::string& document, unsigned indent = 2,
                      bool keepWhitespace = false) {
    QzCString out;
    EXPECT_TRUE(format(document, out, indent, keepWhitespace)) << document;
    return out.std();
}

QzXmlCompareOptions comparing(const QzXmlReaderOptions& reading, bool whitespace) {
    QzXmlCompareOptions options;
    options.ignoreWhitespaceText = !whitespace;
    options.readerOptions = reading;
    return options;
}

// Formats one document both ways and checks that it still says the same; false when the
// tool would refuse it.
bool roundTrips(const std::string& name, const QzCString& document,
                const QzXmlReaderOptions& reading = strictReading()) {
    QzCString indented, kept, again;
    if (!format(document, indented, 2, false, reading)) return false;
    const QzXmlComparison same =
        QzXmlUtils::compareDocuments(document, indented, comparing(reading, false));
    EXPECT_TRUE(same.equal) << name << ": " << same.message << " at " << same.first.path << "\n"
                            << indented;
    EXPECT_TRUE(format(indented, again, 2, false, reading)) << name;
    EXPECT_EQ(again.std(), indented.std()) << name << ": formatting again changed it";
    EXPECT_TRUE(format(document, kept, 2, true, reading)) << name;
    const QzXmlComparison exact =
        QzXmlUtils::compareDocuments(document, kept, comparing(reading, true));
    EXPECT_TRUE(exact.equal) << name << " kept: " << exact.message << "\n" << kept;
    return true;
}

QzCString fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    QzCString bytes;
    bytes.readFile(in);
    return bytes;
}

}  // namespace

TEST(QzXmlFormat, IndentsOnlyWhereNoTextIsChanged) {
    EXPECT_EQ(formatted("<a>\n <b> <c>x</c> </b>\n<d/></a>"),
              "<a>\n  <b>\n    <c>x</c>\n  </b>\n  <d/>\n</a>\n");
    // Mixed content, and everything inside it, stays as written.
    EXPECT_EQ(formatted("<p>Hello <b> <i>big</i> </b> world<br></br></p>"),
              "<p>Hello <b> <i>big</i> </b> world<br/></p>\n");
    EXPECT_EQ(formatted("<a><pre xml:space='preserve'>\n  <x/>\n</pre><b>  </b></a>"),
              "<a>\n  <pre xml:space=\"preserve\">\n  <x/>\n</pre>\n  <b/>\n</a>\n");
    EXPECT_EQ(formatted("<a><b><c/></b></a>", 0), "<a>\n<b>\n<c/>\n</b>\n</a>\n");
    EXPECT_EQ(formatted("<a><b><c/></b></a>", 3), "<a>\n   <b>\n      <c/>\n   </b>\n</a>\n");
    EXPECT_EQ(formatted("<a>\n <b> </b>\n</a>", 2, true), "<a>\n <b> </b>\n</a>\n");
}

TEST(QzXmlFormat, ValuesAndTextReadBackByteForByte) {
    EXPECT_EQ(formatted("<?xml version='1.0' standalone='yes'?><a v='&amp;amp; "
                        "&lt;&quot;\"&#9;&#10;&#13;&apos;>'>"
                        "&amp;lt; &#13;]]&gt;<![CDATA[<&>]]></a>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n"
              "<a v=\"&amp;amp; &lt;&quot;&quot;&#9;&#10;&#13;'>\">&amp;lt; "
              "&#xD;]]&gt;&lt;&amp;&gt;</a>\n");
    // Prefixes and declarations stay where they were, undeclaring the default namespace too.
    EXPECT_EQ(formatted("<a xmlns='u' xmlns:p='v'><b xmlns='' p:x='1'/></a>"),
              "<a xmlns:p=\"v\" xmlns=\"u\">\n  <b p:x=\"1\" xmlns=\"\"/>\n</a>\n");
}

TEST(QzXmlFormat, EveryTestDocumentStillSaysTheSame) {
    std::size_t count = 0;
    for (const char* directory : {"", "../../examples", "../../examples/compare"}) {
        for (const auto& entry : std::filesystem::directory_iterator(ToolData + directory)) {
            if (entry.path().extension() != ".xml") continue;
            const std::string name = entry.path().filename().string();
            const bool malformed = name == "mismatched.xml" || name == "truncated.xml";
            EXPECT_EQ(roundTrips(name, fileBytes(entry.path().string())), !malformed) << name;
            ++count;
        }
    }
    EXPECT_GE(count, 10u);
}

TEST(QzXmlFormat, EveryWellFormedConformanceDocumentStillSaysTheSame) {
    std::ifstream index(TestData + "xmlconf/INDEX.tsv");
    if (!index) GTEST_SKIP() << "no conformance suite at " << TestData;
    std::size_t formattedCount = 0, refused = 0, lenientCount = 0;
    std::string line;
    while (std::getline(index, line)) {
        std::istringstream fields(line);
        std::string path, type, field, namespaces;
        std::getline(fields, path, '\t');
        std::getline(fields, type, '\t');
        for (int skip = 0; skip < 6; ++skip)
            std::getline(fields, field, '\t');
        std::getline(fields, namespaces, '\t');
        // Names such as "::a" or ":" have no namespace-aware reading to keep.
        if ((type != "valid" && type != "invalid") || namespaces == "no") continue;
        const QzCString document = fileBytes(TestData + "xmlconf/" + path);
        try {
            (roundTrips(path, document) ? formattedCount : refused)++;
            if (roundTrips(path, document, QzXmlReaderOptions())) ++lenientCount;
        } catch (const Qzxmsg& e) {
            ADD_FAILURE() << path << ": " << e.why();
        }
    }
    std::cout << formattedCount << " formatted, " << refused << " refused by the strict reader; "
              << lenientCount << " formatted when read leniently\n";
    EXPECT_GT(formattedCount, 980u);
    EXPECT_GT(lenientCount, 900u);
}
