// qzxml: the command-line face of the library.
#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "EventPrinter.h"
#include "FileInput.h"
#include "Formatter.h"
#include "OpenElements.h"
#include "QzCString.h"
#include "QzDateTime.h"
#include "QzXmlContentHandler.h"
#include "QzXmlDuration.h"
#include "QzXmlParseError.h"
#include "QzXmlSAXParser.h"
#include "QzXmlUtils.h"
#include "Qzxmsg.h"
#include "StreamWriter.h"
#include "TextHolders.h"

namespace {

using Args = std::vector<std::string>;

// Exit statuses: 0 success, 1 a negative answer (check, compare), 2 usage errors, unreadable
// or malformed input.
constexpr int kOk = 0;
constexpr int kNo = 1;
constexpr int kFailed = 2;

struct Command {
    const char* name;
    const char* synopsis;
    const char* summary;
    const char* details;  ///< what "qzxml COMMAND --help" adds to the summary
    int (*run)(const Args& args);
};

// How messages name an input: standard input has no file name of its own.
std::string displayName(const std::string& path) {
    return path == "-" ? "<stdin>" : path;
}

int fail(const std::string& command, const std::string& message) {
    std::cerr << "qzxml " << command << ": " << message << '\n';
    return kFailed;
}

// Reads a whole file, or standard input for "-"; when it cannot, says why in reason. Plain
// reads, since a stream hides a failed read (a directory, an I/O error) as an early end.
bool readInput(const std::string& path, QzCString& bytes, std::string& reason) {
    const int fd = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        reason = std::strerror(errno);
        return false;
    }
    constexpr std::size_t chunk = 1 << 16;
    std::size_t length = 0;
    ssize_t n;
    do {
        bytes.resize(length + chunk);
        n = ::read(fd, bytes.data() + length, chunk);
        if (n > 0) length += static_cast<std::size_t>(n);
    } while (n > 0 || (n < 0 && errno == EINTR));
    if (n < 0) reason = std::strerror(errno);
    bytes.resize(length);
    if (fd != STDIN_FILENO) ::close(fd);
    return n == 0;
}

// Reads path (or standard input for "-") into bytes; says so on standard error when it cannot.
bool load(const std::string& command, const std::string& path, QzCString& bytes) {
    std::string reason;
    if (readInput(path, bytes, reason)) return true;
    fail(command, displayName(path) + ": cannot read: " + reason);
    return false;
}

// A command line split into options (those in known, each with whether it takes a value)
// and operands; error says what did not fit.
struct CommandLine {
    std::map<std::string, std::string> options;
    std::vector<std::string> operands;
    std::string error;

    bool has(const std::string& option) const { return options.count(option) != 0; }
};

CommandLine parseCommandLine(const Args& args, const std::map<std::string, bool>& known) {
    CommandLine line;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const auto option = known.find(args[i]);
        if (option == known.end()) {
            if (args[i] != "-" && args[i].rfind("-", 0) == 0) {
                line.error = "unexpected argument '" + args[i] + "'";
            } else {
                line.operands.push_back(args[i]);
            }
        } else if (!option->second) {
            line.options[args[i]];
        } else if (i + 1 < args.size()) {
            line.options[args[i]] = args[i + 1];
            ++i;
        } else {
            line.error = args[i] + " needs a value";
        }
    }
    return line;
}

int runConvert(const Args& args) {
    const CommandLine line = parseCommandLine(args, {{"--from", true}, {"--to", true}});
    if (!line.error.empty()) return fail("convert", line.error);
    if (line.operands.size() > 1) return fail("convert", "expects at most one FILE");
    if (!line.has("--from") || !line.has("--to")) {
        return fail("convert", "--from and --to are required");
    }
    const std::string path = line.operands.empty() ? "-" : line.operands[0];
    QzCString data;
    if (!load("convert", path, data)) return kFailed;
    try {
        std::cout << QzXmlUtils::convertCharset(data, line.options.at("--from").c_str(),
                                                line.options.at("--to").c_str());
    } catch (const Qzxmsg& e) {
        return fail("convert", displayName(path) + ": " + e.why());
    }
    return std::cout.flush() ? kOk : kFailed;
}

int runDate(const Args& args) {
    if (args.size() != 1) return fail("date", "expects one ISO 8601 text");
    const QzDateTime value = QzXmlUtils::convertISODateStringToDateTime(args[0].c_str());
    if (!value.isValid()) return fail("date", "not an ISO 8601 date or date-time: " + args[0]);
    std::cout << QzXmlUtils::convertDateTimeToISOString(value, QzXmlUtils::ISO8601Format) << '\n';
    return kOk;
}

// "FILE:LINE:COLUMN: message", the form editors and compilers use.
void reportParseError(const std::string& path, const QzXmlParseError& e) {
    std::cerr << displayName(path) << ':' << e.getLine() << ':' << e.getColumn() << ": " << e.why()
              << '\n';
}

// Where a text ends, as line and column (bytes) after its last byte.
std::string endPosition(const QzCString& text) {
    const std::string& s = text.std();
    const std::size_t lastLf = s.rfind('\n');
    const std::size_t line = 1 + std::count(s.begin(), s.end(), '\n');
    const std::size_t column = (lastLf == std::string::npos ? s.size() : s.size() - lastLf - 1) + 1;
    return std::to_string(line) + ':' + std::to_string(column);
}

// Runs parse with a parser that reports to handler; prints what went wrong and returns false
// when the document is malformed.
template <class Parse>
bool parseWith(const std::string& path, QzXmlContentHandler* handler,
               const QzXmlReaderOptions& options, Parse parse) {
    QzXmlSAXParser parser;
    parser.setContentHandler(handler);
    parser.setReaderOptions(options);
    try {
        parse(parser);
        return true;
    } catch (const QzXmlParseError& e) {
        reportParseError(path, e);
    } catch (const Qzxmsg& e) {
        std::cerr << displayName(path) << ": " << e.why() << '\n';
    }
    return false;
}

bool parseDocument(const std::string& path, QzCString document, QzXmlContentHandler* handler,
                   const QzXmlReaderOptions& options) {
    return parseWith(path, handler, options,
                     [&document](QzXmlSAXParser& parser) { parser.parse(document); });
}

// A file read a chunk at a time, in memory bounded by its largest node.
bool parseFile(const std::string& path, FileInput& input, QzXmlContentHandler* handler,
               const QzXmlReaderOptions& options) {
    std::istream stream(&input);
    return parseWith(path, handler, options,
                     [&stream](QzXmlSAXParser& parser) { parser.parse(stream); });
}

// The event parser accepts a document that ends inside an element; a check does not.
bool allClosed(const std::string& path, const OpenElements& elements, const std::string& end) {
    if (elements.open.empty()) return true;
    std::cerr << displayName(path) << ':' << end << ": document ends inside element "
              << elements.open.back() << '\n';
    return false;
}

// Whether a document is well-formed and complete, with elements watching it; reports what is
// wrong with it otherwise.
bool wellFormed(const std::string& path, const QzCString& document, OpenElements& elements,
                const QzXmlReaderOptions& options) {
    return parseDocument(path, document, &elements, options) &&
           allClosed(path, elements, endPosition(document));
}

bool wellFormed(const std::string& path, const QzCString& document,
                const QzXmlReaderOptions& options) {
    OpenElements elements;
    return wellFormed(path, document, elements, options);
}

// Opens path for reading a chunk at a time; says so on standard error when it cannot.
bool openInput(const std::string& command, const std::string& path, FileInput& input) {
    std::string reason;
    if (input.open(path, reason)) return true;
    fail(command, displayName(path) + ": cannot read: " + reason);
    return false;
}

// Documents are read strictly unless --lenient asks for the reader's lenient reading.
QzXmlReaderOptions readerOptions(const CommandLine& line) {
    QzXmlReaderOptions options;
    options.strict = !line.has("--lenient");
    return options;
}

int runEvents(const Args& args) {
    const CommandLine line = parseCommandLine(args, {{"--lenient", false}});
    if (!line.error.empty()) return fail("events", line.error);
    if (line.operands.size() != 1) return fail("events", "expects one FILE or -");
    const std::string& path = line.operands[0];
    FileInput input;
    if (!openInput("events", path, input)) return kFailed;
    EventPrinter printer;
    const bool parsed = parseFile(path, input, &printer, readerOptions(line));
    return std::cout.flush() && parsed ? kOk : kFailed;
}

int runFormat(const Args& args) {
    const CommandLine line = parseCommandLine(
        args, {{"--indent", true}, {"--keep-whitespace", false}, {"--lenient", false}});
    if (!line.error.empty()) return fail("format", line.error);
    if (line.operands.size() != 1) return fail("format", "expects one FILE or -");
    unsigned indent = 2;
    if (line.has("--indent")) {
        const std::string& text = line.options.at("--indent");
        char* end = nullptr;
        const unsigned long value = std::strtoul(text.c_str(), &end, 10);
        if (text.empty() || *end != '\0' || text[0] == '-' || value > 64) {
            return fail("format",
                        "--indent takes a number of spaces from 0 to 64, not '" + text + "'");
        }
        indent = static_cast<unsigned>(value);
    }
    const std::string& path = line.operands[0];
    QzCString document;
    TextHolders holders;
    const QzXmlReaderOptions options = readerOptions(line);
    if (!load("format", path, document) || !wellFormed(path, document, holders, options)) {
        return kFailed;
    }
    StreamWriter out(std::cout);
    Formatter formatter(out, std::move(holders.verbatim), indent, line.has("--keep-whitespace"));
    if (!parseDocument(path, document, &formatter, options)) return kFailed;
    formatter.finish();
    return std::cout ? kOk : kFailed;
}

int runCheck(const Args& args) {
    const CommandLine line = parseCommandLine(args, {{"--lenient", false}});
    if (!line.error.empty()) return fail("check", line.error);
    if (line.operands.empty()) return fail("check", "expects one or more FILEs");
    int status = kOk;
    for (const std::string& path : line.operands) {
        FileInput input;
        if (!openInput("check", path, input)) {
            status = kFailed;
            continue;
        }
        OpenElements elements;
        if (!parseFile(path, input, &elements, readerOptions(line)) ||
            !allClosed(path, elements, input.endPosition())) {
            status = std::max(status, kNo);
        }
    }
    return status;
}

// "FILE:LINE:COLUMN: PATH", where a difference lies in one document.
void printPlace(const std::string& path, const QzXmlComparison::Place& place) {
    std::cout << displayName(path) << ':' << place.line << ':' << place.column << ": " << place.path
              << '\n';
}

int runCompare(const Args& args) {
    const CommandLine line = parseCommandLine(
        args, {{"--whitespace", false}, {"--library", false}, {"--lenient", false}});
    if (!line.error.empty()) return fail("compare", line.error);
    if (line.operands.size() != 2) return fail("compare", "expects two FILEs");
    QzCString documents[2];
    for (int i = 0; i < 2; ++i) {
        // Checked one by one first, so that an error names the file it is in.
        if (!load("compare", line.operands[i], documents[i]) ||
            !wellFormed(line.operands[i], documents[i], readerOptions(line))) {
            return kFailed;
        }
    }
    if (line.has("--library")) {
        const bool same = QzXmlUtils::compareXml(documents[0], documents[1]);
        std::cout << (same ? "equivalent" : "different") << '\n';
        return same ? kOk : kNo;
    }
    QzXmlCompareOptions options;
    options.ignoreWhitespaceText = !line.has("--whitespace");
    options.readerOptions = readerOptions(line);
    const QzXmlComparison comparison =
        QzXmlUtils::compareDocuments(documents[0], documents[1], options);
    if (comparison.equal) {
        std::cout << "equivalent\n";
        return kOk;
    }
    std::cout << "different\n" << comparison.message << '\n';
    printPlace(line.operands[0], comparison.first);
    printPlace(line.operands[1], comparison.second);
    return kNo;
}

const char* yesNo(bool value) {
    return value ? "true" : "false";
}

// One line per duration: its canonical text and whether it is valid.
void printDuration(const char* label, const QzXmlDuration& d) {
    std::cout << label << ": ";
    if (d.isValid()) {
        std::cout << d.asString() << " valid\n";
    } else {
        std::cout << "invalid\n";
    }
}

int runDuration(const Args& args) {
    if (args.empty() || args.size() > 2) return fail("duration", "expects one or two durations");
    const QzXmlDuration a{QzCString(args[0])};
    printDuration("A", a);
    if (args.size() == 2) {
        const QzXmlDuration b{QzCString(args[1])};
        printDuration("B", b);
        std::cout << "compareTo: " << a.compareTo(b) << '\n'
                  << "==: " << yesNo(a == b) << '\n'
                  << "A < B: " << yesNo(a < b) << '\n'
                  << "B < A: " << yesNo(b < a) << '\n';
    }
    return std::cout.flush() ? kOk : kFailed;
}

int runHelp(const Args& args);

// What the reading commands say of how they read.
#define STRICTNESS                                                                      \
    "Documents are read as a conforming XML 1.0 and Namespaces processor reads them;\n" \
    "--lenient reads them as the library's reader does by default.\n"

const Command kCommands[] = {
    {"convert", "convert --from CHARSET --to CHARSET [FILE|-]",
     "convert bytes between character sets (ICU names); reads standard input without FILE",
     "The bytes are converted as they are, without looking at any XML declaration.\n"
     "Exit status: 0 on success, 2 when the input cannot be read or converted.\n",
     runConvert},
    {"date", "date TEXT", "parse an ISO 8601 date or date-time and print it in UTC",
     "Accepted: YYYY-MM-DD, optionally followed by Thh:mm:ss, a fraction of a second\n"
     "('.' or ',') and Z or +hh:mm/-hh:mm; without a zone the time is taken as UTC.\n"
     "Exit status: 0 on success, 2 when TEXT is not such a date.\n",
     runDate},
    {"duration", "duration A [B]",
     "print an XML Schema duration's canonical form and validity; with B, also compareTo, "
     "== and < both ways",
     "compareTo counts a month as 30.42 days; == compares component by component;\n"
     "< is XML Schema's partial order, false both ways when the order is indeterminate.\n"
     "Exit status: 0, also for an invalid duration; 2 on a usage error.\n",
     runDuration},
    {"events", "events [--lenient] FILE|-",
     "print one line per node: prolog, start (with attributes), end, text; names with a "
     "namespace as {uri}local",
     "A malformed document is reported as FILE:LINE:COLUMN: message after the events\n"
     "read up to the error.\n" STRICTNESS
     "Exit status: 0 on success, 2 when the input cannot be read or is malformed.\n",
     runEvents},
    {"format", "format [--indent N] [--keep-whitespace] [--lenient] FILE|-",
     "write a document back in UTF-8, indented where that changes nothing it says",
     "Elements that hold only elements are indented by N spaces a level (2 by default),\n"
     "the whitespace between their children replaced. The content of an element that holds\n"
     "text, or is marked xml:space=\"preserve\", is written as it stands. Values and text\n"
     "are escaped so that they read back byte for byte. --keep-whitespace indents nothing\n"
     "and keeps all text: only the spelling of the markup changes. Comments, processing\n"
     "instructions and the document type declaration are not kept.\n" STRICTNESS
     "Exit status: 0 on success, 2 when the input cannot be read or is malformed.\n",
     runFormat},
    {"check", "check [--lenient] FILE...",
     "report FILE:LINE:COLUMN: message for each malformed file; exit 1 if any is malformed",
     "A document that ends inside an element is reported at its end. '-' reads\n"
     "standard input.\n" STRICTNESS
     "Exit status: 0 when all are well-formed, 1 when one is malformed, 2 when one cannot\n"
     "be read.\n",
     runCheck},
    {"compare", "compare [--whitespace] [--library] [--lenient] A B",
     "tell whether two documents say the same (exit 0) or not (exit 1, with the first "
     "difference); 2 on a parse error",
     "Names are compared by namespace URI and local name, attributes in any order,\n"
     "text byte for byte; prefixes, namespace declarations, comments and processing\n"
     "instructions are not. Whitespace-only text is skipped unless --whitespace is given.\n"
     "A difference is printed as a line saying what differs, then FILE:LINE:COLUMN: PATH\n"
     "for each document. --library answers by the library's compareXml rules instead.\n"
     "'-' reads standard input.\n" STRICTNESS
     "Exit status: 0 when equivalent, 1 when different, 2 when one cannot be read or is\n"
     "malformed.\n",
     runCompare},
    {"help", "help [COMMAND]", "list the commands, or describe one", "", runHelp},
};

const Command* findCommand(const std::string& name) {
    for (const Command& c : kCommands) {
        if (name == c.name) return &c;
    }
    return nullptr;
}

void printUsage(const Command& c) {
    std::cout << "usage: qzxml " << c.synopsis << "\n\n" << c.summary << ".\n" << c.details;
}

int runHelp(const Args& args) {
    if (!args.empty()) {
        const Command* c = findCommand(args[0]);
        if (c == nullptr) return fail("help", "unknown command '" + args[0] + "'");
        printUsage(*c);
        return kOk;
    }
    std::cout << "usage: qzxml COMMAND [ARGS]\n\ncommands:\n";
    for (const Command& c : kCommands) {
        std::cout << "  " << c.synopsis << "\n      " << c.summary << '\n';
    }
    std::cout << "\n'qzxml COMMAND --help' describes one command. FILE may be '-' for standard "
                 "input.\n'qzxml --version' prints the version.\n";
    return kOk;
}

bool isHelpOption(const std::string& arg) {
    return arg == "--help" || arg == "-h";
}

// Runs a command; anything it did not foresee is reported, never an abort.
int run(const Command& command, const Args& args) {
    try {
        return command.run(args);
    } catch (const Qzxmsg& e) {
        return fail(command.name, e.why());
    } catch (const std::exception& e) {
        return fail(command.name, e.what());
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        runHelp({});
        return kFailed;
    }
    const std::string name = argv[1];
    if (isHelpOption(name)) return runHelp({});
    if (name == "--version") {
        std::cout << "qzxml " << QZXML_VERSION << '\n';
        return kOk;
    }
    const Args args(argv + 2, argv + argc);
    const Command* command = findCommand(name);
    if (command == nullptr) return fail(name, "unknown command (see qzxml --help)");
    if (!args.empty() && isHelpOption(args[0])) return runHelp({name});
    return run(*command, args);
}
