// The streaming reader and the fed reader against the in-memory reader: every document of
// the tests and of the W3C suite, strict and lenient, read in chunks and fed in pieces of
// 1, 2, 3, 7, 64 and 4096 bytes, gives the same nodes, values, errors, lines and columns.
#include <gtest/gtest.h>

#include <dirent.h>

#include <fstream>
#include <iterator>
#include <set>

#include "ThreeWayReading.h"

namespace {

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
        for (const std::size_t size : kSizes) {
            for (const bool feeding : {false, true}) {
                const std::vector<std::string> got =
                    feeding ? three_way::fed(document, mode(strict), size)
                            : three_way::streamed(document, mode(strict), size);
                if (reportedWhereMet(expected)) {
                    const auto message = [](const std::string& line) {
                        return line.substr(line.find(' ', 6));
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
