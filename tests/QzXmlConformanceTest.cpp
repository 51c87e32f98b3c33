// Every document of the W3C XML Conformance Test Suite through the reader and the event
// parser. The reader is lenient, so accepting a not-well-formed document is not a failure;
// what must hold is that each document ends, soon, with a result or with one of the allowed
// exceptions (the sanitizer build adds: without memory errors or leaks).
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "QzBoundsErr.h"
#include "QzXmlContentHandler.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "QzXmlSAXParser.h"

namespace {

const std::string XmlConf = std::string(QZXML_TESTDATA_DIR) + "/xmlconf/";

// Ends the process when one document takes longer than the limit: a hang would otherwise
// only show as the whole test timing out, without saying which document hung.
class Watchdog {
public:
    explicit Watchdog(std::chrono::seconds limit) : limit_(limit), thread_([this] { watch(); }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            done_ = true;
        }
        wake_.notify_one();
        thread_.join();
    }
    void start(const std::string& document) {
        std::lock_guard<std::mutex> lock(mutex_);
        document_ = document;
        started_ = std::chrono::steady_clock::now();
    }

private:
    void watch() {
        std::unique_lock<std::mutex> lock(mutex_);
        while (!wake_.wait_for(lock, std::chrono::seconds(1), [this] { return done_; })) {
            if (!document_.empty() && std::chrono::steady_clock::now() - started_ > limit_) {
                std::fprintf(stderr, "%s: still running after %lld s\n", document_.c_str(),
                             static_cast<long long>(limit_.count()));
                std::_Exit(1);
            }
        }
    }
    const std::chrono::seconds limit_;
    std::mutex mutex_;
    std::condition_variable wake_;
    bool done_ = false;
    std::string document_;
    std::chrono::steady_clock::time_point started_;
    std::thread thread_;
};

class Counter : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName&, const QzXmlAttributeSet&) override { ++events; }
    void endElement(const QzXmlName&) override { ++events; }
    void characters(const QzCString&) override { ++events; }
    std::size_t events = 0;
};

enum class Outcome { Accepted, Rejected, Escaped };

// Runs f; a parse or bounds error is a rejection, any other exception escaped.
template <typename F>
Outcome outcomeOf(F&& f, std::string& escaped) {
    try {
        f();
        return Outcome::Accepted;
    } catch (const QzXmlParseError&) {
        return Outcome::Rejected;
    } catch (const QzBoundsErr&) {
        return Outcome::Rejected;
    } catch (const std::exception& e) {
        escaped = e.what();
    } catch (const Qzxmsg& e) {
        escaped = e.why();
    } catch (...) {
        escaped = "unknown exception";
    }
    return Outcome::Escaped;
}

void readAll(const std::string& bytes) {
    QzXmlReader reader{QzCString(bytes)};
    // Each node consumes at least a byte, so more nodes than bytes means no progress.
    std::size_t nodes = 0;
    while (!reader.eof()) {
        reader.readNextNode();
        ASSERT_LE(++nodes, bytes.size()) << "the reader stopped advancing";
    }
}

void parseAll(const std::string& bytes) {
    Counter counter;
    QzXmlSAXParser parser;
    parser.setContentHandler(&counter);
    parser.parse(QzCString(bytes));
}

struct Tally {
    std::size_t readerAccepted = 0;
    std::size_t readerRejected = 0;
    std::size_t parserAccepted = 0;
    std::size_t parserRejected = 0;
};

void count(Outcome outcome, std::size_t& accepted, std::size_t& rejected) {
    if (outcome == Outcome::Accepted) ++accepted;
    if (outcome == Outcome::Rejected) ++rejected;
}

void printTable(const std::map<std::string, Tally>& tallies) {
    std::cout << "| type | documents | reader accepted | reader rejected | event parser accepted "
                 "| event parser rejected |\n|---|---|---|---|---|---|\n";
    for (const auto& [type, t] : tallies) {
        std::cout << "| " << type << " | " << t.readerAccepted + t.readerRejected << " | "
                  << t.readerAccepted << " | " << t.readerRejected << " | " << t.parserAccepted
                  << " | " << t.parserRejected << " |\n";
    }
}

TEST(QzXmlConformanceTest, EveryDocumentEndsWithAResultOrAParseError) {
    std::ifstream index(XmlConf + "INDEX.tsv");
    if (!index) GTEST_SKIP() << "no conformance suite at " << XmlConf;
    std::map<std::string, Tally> tallies;
    Watchdog watchdog(std::chrono::seconds(30));
    std::string line;
    while (std::getline(index, line)) {
        std::istringstream fields(line);
        std::string path, type;
        std::getline(fields, path, '\t');
        std::getline(fields, type, '\t');
        std::ifstream file(XmlConf + path, std::ios::binary);
        ASSERT_TRUE(file) << path;
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        watchdog.start(path);
        Tally& tally = tallies[type];
        std::string escaped;
        count(outcomeOf([&] { readAll(bytes); }, escaped), tally.readerAccepted,
              tally.readerRejected);
        EXPECT_EQ(escaped, "") << path << " (reader)";
        count(outcomeOf([&] { parseAll(bytes); }, escaped), tally.parserAccepted,
              tally.parserRejected);
        EXPECT_EQ(escaped, "") << path << " (event parser)";
    }
    ASSERT_FALSE(tallies.empty());
    printTable(tallies);
}

}  // namespace
