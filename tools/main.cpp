// qzxml: the command-line face of the library.
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "QzCString.h"
#include "QzDateTime.h"
#include "QzXmlUtils.h"
#include "Qzxmsg.h"

namespace {

using Args = std::vector<std::string>;

// Exit statuses: 0 success, 2 usage errors and failures (1 is kept for negative answers).
constexpr int kOk = 0;
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

int runHelp(const Args& args);

const Command kCommands[] = {
    {"convert", "convert --from CHARSET --to CHARSET [FILE|-]",
     "convert bytes between character sets (ICU names); reads standard input without FILE",
     runConvert},
    {"date", "date TEXT", "parse an ISO 8601 date or date-time and print it in UTC", runDate},
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
