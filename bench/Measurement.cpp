#include "Measurement.h"

#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

// Everything the child writes to its standard output, and whether it exited with 0.
bool runChild(const std::vector<std::string>& arguments, std::string& output) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0) return false;
    const pid_t child = fork();
    if (child == 0) {
        dup2(pipeEnds[1], STDOUT_FILENO);
        close(pipeEnds[0]);
        close(pipeEnds[1]);
        std::vector<char*> argv;
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(pipeEnds[1]);
    char chunk[256];
    for (ssize_t n; (n = read(pipeEnds[0], chunk, sizeof chunk)) > 0;)
        output.append(chunk, n);
    close(pipeEnds[0]);
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

Measurement timePasses(Workload& workload, int passes) {
    Measurement result;
    workload.prepare();
    result.checksum = workload.run();
    std::vector<double> seconds;
    for (int i = 0; i < passes; ++i) {
        workload.prepare();
        const double start = threadSeconds();
        const std::uint64_t checksum = workload.run();
        seconds.push_back(threadSeconds() - start);
        if (checksum != result.checksum) throw std::runtime_error("passes disagree");
    }
    result.seconds = median(seconds);
    return result;
}

long measurePeakKiB(const std::string& memoryProgram, const std::string& workload,
                    const std::string& path) {
    std::string output;
    if (!runChild({memoryProgram, workload, path}, output)) return -1;
    return std::stol(output);
}

std::string siblingProgram(const std::string& name) {
    std::vector<char> self(4096);
    const ssize_t n = readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (n <= 0) return name;
    const std::string path(self.data(), static_cast<std::size_t>(n));
    return path.substr(0, path.find_last_of('/') + 1) + name;
}
