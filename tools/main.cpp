// qzxml: the command-line face of the library.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "EventPrinter.h"
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
    int (*run)(const Args& args);
};

int fail(const std::string& command, const std::string& message) {
    std::cerr << "qzxml " << command << ": " << message << '\n';
    return kFailed;
}

// Reads a whole file, or standard input for "-"; false when it cannot be read.
bool readInput(const std::string& path, QzCString& bytes) {
    if (path == "-") {
        bytes.readFile(std::cin);
        return !std::cin.bad();
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.readFile(in);
    return !in.bad();
}

int runConvert(const Args& args) {
    std::string from, to, path = "-";
    bool havePath = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        if ((args[i] == "--from" || args[i] == "--to") && i + 1 < args.size()) {
            (args[i] == "--from" ? from : to) = args[i + 1];
            ++i;
        } else if (!havePath && (args[i] == "-" || args[i].rfind("-", 0) != 0)) {
            path = args[i];
            havePath = true;
        } else {
            return fail("convert", "unexpected argument '" + args[i] + "'");
        }
    }
    if (from.empty() || to.empty()) return fail("convert", "--from and --to are required");
    QzCString data;
    if (!readInput(path, data)) return fail("convert", path + ": cannot read");
    try {
        std::cout << QzXmlUtils::convertCharset(data, from.c_str(), to.c_str());
    } catch (const Qzxmsg& e) {
        return fail("convert", path + ": " + e.why());
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
    std::cerr << path << ':' << e.getLine() << ':' << e.getColumn() << ": " << e.why() << '\n';
}

// Where a text ends, as line and column (bytes) after its last byte.
std::string endPosition(const QzCString& text) {
    const std::string& s = text.std();
    const std::size_t lastLf = s.rfind('\n');
    const std::size_t line = 1 + std::count(s.begin(), s.end(), '\n');
    const std::size_t column = (lastLf == std::string::npos ? s.size() : s.size() - lastLf - 1) + 1;
    return std::to_string(line) + ':' + std::to_string(column);
}

// Parses a document with handler; prints what went wrong and returns false when it is
// malformed.
bool parseDocument(const std::string& path, QzCString document, QzXmlContentHandler* handler) {
    QzXmlSAXParser parser;
    parser.setContentHandler(handler);
    try {
        parser.parse(document);
        return true;
    } catch (const QzXmlParseError& e) {
        reportParseError(path, e);
    } catch (const Qzxmsg& e) {
        std::cerr << path << ": " << e.why() << '\n';
    }
    return false;
}

int runEvents(const Args& args) {
    if (args.size() != 1) return fail("events", "expects one FILE or -");
    QzCString document;
    if (!readInput(args[0], document)) return fail("events", args[0] + ": cannot read");
    EventPrinter printer;
    const bool parsed = parseDocument(args[0], document, &printer);
    return std::cout.flush() && parsed ? kOk : kFailed;
}

int runFormat(const Args& args) {
    if (args.size() != 1) return fail("format", "expects one FILE or -");
    QzCString document;
    if (!readInput(args[0], document)) return fail("format", args[0] + ": cannot read");
    Formatter formatter;
    if (!parseDocument(args[0], document, &formatter)) return kFailed;
    std::cout << formatter.finish();
    return std::cout.flush() ? kOk : kFailed;
}

int runCheck(const Args& args) {
    if (args.empty()) return fail("check", "expects one or more FILEs");
    int status = kOk;
    for (const std::string& path : args) {
        QzCString document;
        if (!readInput(path, document)) {
            fail("check", path + ": cannot read");
            status = kFailed;
            continue;
        }
        OpenElements elements;
        if (!parseDocument(path, document, &elements)) {
            status = std::max(status, kNo);
        } else if (!elements.open.empty()) {
            std::cerr << path << ':' << endPosition(document) << ": document ends inside element "
                      << elements.open.back() << '\n';
            status = std::max(status, kNo);
        }
    }
    return status;
}

int runCompare(const Args& args) {
    if (args.size() != 2) return fail("compare", "expects two FILEs");
    QzCString documents[2];
    for (int i = 0; i < 2; ++i) {
        if (!readInput(args[i], documents[i])) return fail("compare", args[i] + ": cannot read");
        // Checked one by one first, so that an error names the file it is in.
        if (!parseDocument(args[i], documents[i], nullptr)) return kFailed;
    }
    const bool same = QzXmlUtils::compareXml(documents[0], documents[1]);
    std::cout << (same ? "equivalent" : "different") << '\n';
    return same ? kOk : kNo;
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

const Command kCommands[] = {
    {"convert", "convert --from CHARSET --to CHARSET [FILE|-]",
     "convert bytes between character sets (ICU names); reads standard input without FILE",
     runConvert},
    {"date", "date TEXT", "parse an ISO 8601 date or date-time and print it in UTC", runDate},
    {"duration", "duration A [B]",
     "print an XML Schema duration's canonical form and validity; with B, also compareTo, "
     "== and < both ways",
     runDuration},
    {"events", "events FILE|-",
     "print one line per node: prolog, start (with attributes), end, text; names with their "
     "namespace URI in braces",
     runEvents},
    {"format", "format FILE|-",
     "write a document back indented by two spaces a level, escaped, namespaces declared "
     "where needed, in UTF-8",
     runFormat},
    {"check", "check FILE...",
     "report FILE:LINE:COLUMN: message for each malformed file; exit 1 if any is malformed",
     runCheck},
    {"compare", "compare A B",
     "tell whether two documents are equivalent (exit 0) or not (exit 1); 2 on a parse error",
     runCompare},
    {"help", "help", "list the commands", runHelp},
};

int runHelp(const Args&) {
    std::cout << "usage: qzxml COMMAND [ARGS]\n\ncommands:\n";
    for (const Command& c : kCommands) {
        std::cout << "  " << c.synopsis << "\n      " << c.summary << '\n';
    }
    return kOk;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        runHelp({});
        return kFailed;
    }
    const std::string name = argv[1];
    if (name == "--help" || name == "-h") return runHelp({});
    const Args args(argv + 2, argv + argc);
    for (const Command& c : kCommands) {
        if (name == c.name) return c.run(args);
    }
    return fail(name, "unknown command (see qzxml --help)");
}
