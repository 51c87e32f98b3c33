// The strict reader against libxml2: the same verdict on every applicable document of the W3C
// XML Conformance Test Suite and on the repository's own documents, and the same events on
// those both accept.
#include <gtest/gtest.h>

#include <dirent.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "StrictOracle.h"

namespace {

using strict_oracle::OracleReading;
using strict_oracle::Reading;

const std::string XmlConf = std::string(QZXML_TESTDATA_DIR) + "/xmlconf/";

bool readFile(const std::string& path, std::string& out) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream text;
    text << in.rdbuf();
    out = text.str();
    return true;
}

std::vector<std::string> split(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t from = 0;
    for (std::size_t tab; (tab = line.find('\t', from)) != std::string::npos; from = tab + 1)
        fields.push_back(line.substr(from, tab - from));
    fields.push_back(line.substr(from));
    return fields;
}

// Documents that libxml2 reads otherwise than the recommendation, which the suite's canonical
// output settles (the strict conformance test compares the strict reading with it).
const std::map<std::string, std::string> Libxml2ReadsOtherwise = {
    {"xmltest/valid/sa/068.xml",
     "libxml2 turns the carriage return that an entity's &#13; gives into a line feed"},
};

// Whether libxml2 must substitute entities and add defaults to read what the strict reader
// reads: the internal subset declares something that changes the events.
bool needsDeclarations(const OracleReading& oracle) {
    return oracle.declaredEntity || oracle.attributeDefault || oracle.tokenizedAttribute;
}

// What differs between the two readings, or empty when they agree.
std::string difference(const Reading& oracle, const Reading& strict) {
    if (oracle.accepted != strict.accepted) {
        return oracle.accepted ? "libxml2 accepts, qzxml rejects: " + strict.error
                               : "libxml2 rejects (" + oracle.error + "), qzxml accepts";
    }
    if (oracle.accepted && oracle.events != strict.events)
        return strict_oracle::firstDifference(oracle.events, strict.events);
    return "";
}

TEST(StrictAgainstLibxml2, AgreesOnTheConformanceSuite) {
    std::ifstream index(XmlConf + "INDEX.tsv");
    if (!index) GTEST_SKIP() << "no conformance suite at " << XmlConf;
    std::vector<std::string> disagreements, overruled, eitherWay;
    int compared = 0, agreeing = 0, accepted = 0, expanded = 0;
    for (std::string line; std::getline(index, line);) {
        const std::vector<std::string> f = split(line);
        if (f.size() < 10) continue;
        const std::string &path = f[0], &type = f[1], &entities = f[2], &recommendation = f[5],
                          &version = f[6], &edition = f[7], &namespaces = f[8];
        // XML 1.0 fifth edition with namespaces, and no entities to expand.
        const bool applies =
            (recommendation.rfind("XML1.0", 0) == 0 || recommendation.rfind("NS1.0", 0) == 0) &&
            version != "1.1" && namespaces != "no" &&
            (edition.empty() || edition.find('5') != std::string::npos) && entities == "none";
        std::string document;
        if (!applies || !readFile(XmlConf + path, document)) continue;
        OracleReading oracle = strict_oracle::readWithLibxml2(document);
        Reading strict;
        try {
            strict = strict_oracle::readStrict(document);
        } catch (...) {
            disagreements.push_back(path + ": an exception other than QzXmlParseError");
            continue;
        }
        if (needsDeclarations(oracle)) {
            const bool errorFirst = !oracle.accepted;
            oracle = strict_oracle::readWithLibxml2(document, true);
            oracle.accepted = oracle.accepted && !errorFirst;
            ++expanded;
        }
        const auto otherwise = Libxml2ReadsOtherwise.find(path);
        if (otherwise != Libxml2ReadsOtherwise.end()) {
            EXPECT_NE(difference(oracle, strict), "") << path << " is read alike now";
            overruled.push_back(path + ": " + otherwise->second);
            continue;
        }
        // Where libxml2 2.9 contradicts the suite's catalogue on well-formedness, the
        // catalogue decides (and there are no events of libxml2's to compare).
        const bool wellFormed = type == "valid" || type == "invalid";
        if ((type == "not-wf" && oracle.accepted) || (wellFormed && !oracle.accepted)) {
            overruled.push_back(path + " [" + type + "]: libxml2 " +
                                (oracle.accepted ? "accepts" : "rejects: " + oracle.error));
            oracle.accepted = !oracle.accepted;
            oracle.error = "the catalogue says " + type;
            oracle.events = strict.events;
        }
        ++compared;
        accepted += oracle.accepted;
        // The catalogue's "error" may be reported or not: either verdict conforms.
        if (type == "error" && oracle.accepted != strict.accepted) {
            ++agreeing;
            eitherWay.push_back(path + ": " + difference(oracle, strict));
            continue;
        }
        const std::string diff = difference(oracle, strict);
        if (diff.empty()) {
            ++agreeing;
        } else {
            disagreements.push_back(path + " [" + type + "]: " + diff);
        }
    }
    std::cout << "compared " << compared << " (" << accepted << " well-formed): " << agreeing
              << " agree, " << disagreements.size() << " disagree\n";
    for (const std::string& o : overruled)
        std::cout << "  catalogue over libxml2: " << o << "\n";
    for (const std::string& e : eitherWay)
        std::cout << "  either verdict conforms: " << e << "\n";
    std::cout << expanded
              << " of them read by libxml2 with XML_PARSE_NOENT | XML_PARSE_DTDATTR, "
                 "for the declarations of their internal subset\n";
    for (const std::string& d : disagreements)
        std::cout << "  disagree: " << d << "\n";
    EXPECT_GT(compared, 1700);
    EXPECT_TRUE(disagreements.empty()) << disagreements.size() << " documents disagree";
}

std::vector<std::string> xmlFilesIn(const std::string& dir) {
    std::set<std::string> names;
    if (DIR* d = opendir(dir.c_str())) {
        while (const dirent* e = readdir(d)) {
            const std::string name = e->d_name;
            if (name.size() > 4 && name.compare(name.size() - 4, 4, ".xml") == 0)
                names.insert(dir + "/" + name);
        }
        closedir(d);
    }
    return {names.begin(), names.end()};
}

TEST(StrictAgainstLibxml2, AgreesOnTheRepositoryDocuments) {
    const std::string root = std::string(QZXML_SOURCE_DIR);
    std::size_t documents = 0;
    for (const char* dir : {"/tests/data", "/examples", "/examples/compare"}) {
        for (const std::string& path : xmlFilesIn(root + dir)) {
            std::string document;
            ASSERT_TRUE(readFile(path, document)) << path;
            ++documents;
            const OracleReading oracle = strict_oracle::readWithLibxml2(document);
            const Reading strict = strict_oracle::readStrict(document);
            EXPECT_EQ(difference(oracle, strict), "") << path;
            // Both malformed documents must fail, the others must be read.
            const bool malformed = path.find("mismatched") != std::string::npos ||
                                   path.find("truncated") != std::string::npos;
            EXPECT_EQ(oracle.accepted, !malformed) << path << ": " << oracle.error;
        }
    }
    EXPECT_GE(documents, 10u);
}

// The normalization the comparison relies on, spelled out: line ends, attribute whitespace,
// character references, the xml prefix, default and prefixed namespaces, CDATA merged with
// text, comments dropped, an empty element closed, and attributes in (URI, local name) order.
TEST(StrictAgainstLibxml2, ReadsTheSameEventsAsWritten) {
    const std::string document =
        "<?xml version='1.0'?>\r\n<!-- c -->\r<r xmlns='urn:d' xmlns:p='urn:p' z='1' p:a='x\r\n"
        "y\tz' xml:lang='en' a='&#13;&#x9;&lt;'>t\r\nu<![CDATA[<v>]]><!-- c -->w<?pi x?>"
        "<p:e/></r>\n";
    const std::vector<std::string> expected = {
        "start {urn:d}r {}a=\"\\x0d\\x09<\" {}z=\"1\" "
        "{http://www.w3.org/XML/1998/namespace}lang=\"en\" {urn:p}a=\"x y z\"",
        "text \"t\\x0au<v>w\"", "start {urn:p}e", "end", "end"};
    EXPECT_EQ(strict_oracle::readWithLibxml2(document).events, expected);
    const Reading strict = strict_oracle::readStrict(document);
    EXPECT_TRUE(strict.accepted) << strict.error;
    EXPECT_EQ(strict.events, expected);

    // libxml2 escapes an "&" in a namespace name; the oracle takes it back.
    const std::vector<std::string> ampersand = {"start {a&b}r", "end"};
    EXPECT_EQ(strict_oracle::readWithLibxml2("<q:r xmlns:q='a&amp;b'/>").events, ampersand);
    EXPECT_EQ(strict_oracle::readStrict("<q:r xmlns:q='a&amp;b'/>").events, ampersand);
    // Substituting entities (for declarations), libxml2 keeps the name as decoded: taking an
    // escape back then would decode "&#38;#38;" twice (found by fuzz_strict).
    const std::string twice = "<!DOCTYPE r [<!ATTLIST r a CDATA '1'>]><r xmlns='x&#38;#38;y'/>";
    const std::vector<std::string> once = {"start {x&#38;y}r {}a=\"1\"", "end"};
    EXPECT_EQ(strict_oracle::readWithLibxml2(twice, true).events, once);
    EXPECT_EQ(strict_oracle::readStrict(twice).events, once);

    // An unknown entity stays as written under a DOCTYPE with an external subset, as libxml2
    // keeps a reference.
    const std::string withEntity = "<!DOCTYPE r SYSTEM 'r.dtd'><r>&e;</r>";
    const OracleReading oracle = strict_oracle::readWithLibxml2(withEntity);
    EXPECT_TRUE(oracle.accepted && oracle.doctype && oracle.undeclaredEntity);
    const std::vector<std::string> literal = {"start {}r", "text \"&e;\"", "end"};
    EXPECT_EQ(oracle.events, literal);
    EXPECT_EQ(strict_oracle::readStrict(withEntity).events, literal);

    // A declared attribute whose local name starts with a fifth-edition NameStartChar that the
    // fourth edition had no letter for: libxml2 stops at it, and says why.
    const std::string declared =
        "<!DOCTYPE r [<!ATTLIST r xml:\xef\xbb\xbfg CDATA #IMPLIED>]>"
        "<r xml:\xef\xbb\xbfg='1'/>";
    EXPECT_TRUE(strict_oracle::readWithLibxml2(declared).fourthEditionName);
    const std::vector<std::string> declaredEvents = {
        "start {}r {http://www.w3.org/XML/1998/namespace}\xef\xbb\xbfg=\"1\"", "end"};
    EXPECT_EQ(strict_oracle::readStrict(declared).events, declaredEvents);
}

}  // namespace
