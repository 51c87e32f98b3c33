// A document of any size read from a pipe by the streaming reader, and the same content read
// in memory. A child process writes a generated document of GIGABYTES through a pipe; the
// streaming reader walks every node of it. Then 200 MB of the same content is read in memory
// by the byte-buffer reader, and streamed from memory (the reader's cost without the pipe's).
// Prints the throughputs, their ratios and the streaming run's peak resident size; exits 1
// when the peak passes 32 MiB or the pipe's ratio falls below 0.9.
//
// With --corpus, the records are those between the root tags of FILE (a benchmark corpus).
//
//   qzxml_stream_bench [GIGABYTES (4)] [--strict] [--chunk=BYTES (65536)] [--corpus=FILE]
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <istream>
#include <string>

#include "FileInput.h"
#include "QzXmlReader.h"

namespace {

// The content of path between its root element's tags, or empty.
std::string rootContent(const char* path) {
    std::FILE* file = std::fopen(path, "rb");
    if (file == nullptr) return std::string();
    std::string all;
    char buffer[1 << 16];
    for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;)
        all.append(buffer, n);
    std::fclose(file);
    const std::size_t root = all.find('<', all.find("?>") + 2);
    const std::size_t first = all.find('>', root) + 1;
    const std::size_t last = all.rfind("</");
    return root == std::string::npos || last < first ? std::string()
                                                     : all.substr(first, last - first);
}

// About a mebibyte of records, repeated to make a document of any length.
std::string recordBlock() {
    std::string block;
    for (int i = 0; block.size() < (1 << 20); ++i) {
        const std::string n = std::to_string(i);
        block += "  <record id=\"r" + n + "\" kind=\"entry\">\n    <name>Record number " + n +
                 "</name>\n    <value unit=\"kg\">" + n +
                 ".25</value>\n    <note>Fish &amp; "
                 "chips, caf\xC3\xA9 " +
                 n + "</note>\n  </record>\n";
    }
    return block;
}

const char* const kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<records>\n";
const char* const kTail = "</records>\n";

bool writeAll(int fd, const char* data, std::size_t length) {
    while (length > 0) {
        const ssize_t n = ::write(fd, data, length);
        if (n <= 0) return false;
        data += n;
        length -= static_cast<std::size_t>(n);
    }
    return true;
}

// Walks every node; returns the number of nodes.
std::size_t walk(QzXmlReader& reader) {
    std::size_t nodes = 0;
    while (!reader.eof()) {
        reader.readNextNode();
        ++nodes;
    }
    return nodes;
}

// A stream over bytes in memory: the streaming reader's own cost, without the pipe's.
class MemoryInput : public std::streambuf {
public:
    explicit MemoryInput(std::string& bytes) {
        setg(&bytes[0], &bytes[0], &bytes[0] + bytes.size());
    }
};

double seconds(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char** argv) {
    double gigabytes = 4;
    QzXmlReaderOptions options;
    std::string block;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--strict") == 0) {
            options.strict = true;
        } else if (std::strncmp(argv[i], "--corpus=", 9) == 0) {
            block = rootContent(argv[i] + 9);
            if (block.empty()) return 2;
        } else if (std::strncmp(argv[i], "--chunk=", 8) == 0) {
            options.chunkSize = std::strtoul(argv[i] + 8, nullptr, 10);
        } else {
            gigabytes = std::atof(argv[i]);
        }
    }
    if (block.empty()) block = recordBlock();
    const auto blocks = static_cast<std::size_t>(gigabytes * (1 << 30) / block.size());

    int pipeFds[2];
    if (::pipe(pipeFds) != 0) return 2;
    // A pipe of a mebibyte, as a shell pipeline given a large read would have.
    ::fcntl(pipeFds[1], F_SETPIPE_SZ, 1 << 20);
    const pid_t writer = ::fork();
    if (writer == 0) {
        ::close(pipeFds[0]);
        bool ok = writeAll(pipeFds[1], kHead, std::strlen(kHead));
        for (std::size_t i = 0; ok && i < blocks; ++i)
            ok = writeAll(pipeFds[1], block.data(), block.size());
        ok = ok && writeAll(pipeFds[1], kTail, std::strlen(kTail));
        ::_exit(ok ? 0 : 1);
    }
    ::close(pipeFds[1]);
    FileInput input;
    std::string reason;
    ::dup2(pipeFds[0], STDIN_FILENO);
    if (!input.open("-", reason)) {
        std::fprintf(stderr, "cannot read the pipe: %s\n", reason.c_str());
        return 2;
    }
    std::istream stream(&input);
    auto start = std::chrono::steady_clock::now();
    QzXmlReader streamed(stream, options);
    const std::size_t streamedNodes = walk(streamed);
    const double streamedSeconds = seconds(start);
    int status = 0;
    ::waitpid(writer, &status, 0);
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const double peakMiB = static_cast<double>(usage.ru_maxrss) / 1024;
    const double streamedBytes = static_cast<double>(blocks) * block.size();

    // The same content in memory, 200 MB of it, read twice: the second run is timed warm.
    std::string document = kHead;
    const std::size_t memoryBlocks = (200u << 20) / block.size();
    for (std::size_t i = 0; i < memoryBlocks; ++i)
        document += block;
    document += kTail;
    // And the same 200 MB streamed from memory, to tell the reader's cost from the pipe's.
    double memorySeconds = 0;
    double memoryStreamSeconds = 0;
    for (int run = 0; run < 2; ++run) {
        std::string copy = document;
        start = std::chrono::steady_clock::now();
        QzXmlReader inMemory(reinterpret_cast<unsigned char*>(&copy[0]), copy.size(), options);
        walk(inMemory);
        memorySeconds = seconds(start);
        MemoryInput buffer(copy);
        std::istream memoryStream(&buffer);
        start = std::chrono::steady_clock::now();
        QzXmlReader fromMemory(memoryStream, options);
        walk(fromMemory);
        memoryStreamSeconds = seconds(start);
    }
    const double size = static_cast<double>(document.size());
    const double streamedRate = streamedBytes / streamedSeconds / 1e6;
    const double memoryRate = size / memorySeconds / 1e6;
    const double memoryStreamRate = size / memoryStreamSeconds / 1e6;
    const double ratio = streamedRate / memoryRate;
    std::printf(
        "| reading (%s) | bytes | nodes | MB/s | peak RSS (MiB) |\n|---|---:|---:|---:|---:|\n"
        "| streamed from a pipe | %.0f | %zu | %.0f | %.1f |\n"
        "| streamed from memory | %.0f | - | %.0f | - |\n"
        "| in memory (byte buffer) | %.0f | - | %.0f | - |\n\n"
        "from a pipe / in memory: %.2f; from memory / in memory: %.2f\n",
        options.strict ? "strict" : "lenient", streamedBytes, streamedNodes, streamedRate, peakMiB,
        size, memoryStreamRate, size, memoryRate, ratio, memoryStreamRate / memoryRate);
    const bool ok = WIFEXITED(status) && WEXITSTATUS(status) == 0 && peakMiB <= 32 && ratio >= 0.9;
    return ok ? 0 : 1;
}
