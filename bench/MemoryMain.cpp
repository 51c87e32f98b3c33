// qzxml-bench-memory WORKLOAD FILE: prints the peak heap growth of one pass in KiB. The
// benchmark runs it once per workload and document, so that what one workload leaves
// behind does not count for the next.

#include <cstdio>
#include <exception>

#include "MallocCounter.h"
#include "Qzxmsg.h"
#include "Workload.h"

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s WORKLOAD FILE\n", argv[0]);
        return 2;
    }
    try {
        std::unique_ptr<Workload> workload = makeWorkload(argv[1]);
        if (!workload) {
            std::fprintf(stderr, "no workload %s\n", argv[1]);
            return 2;
        }
        const Document document(argv[2]);
        workload->load(document);
        workload->prepare();
        // No warm-up pass: what a pass keeps for the next one is part of what it needs.
        const std::int64_t before = MallocCounter::live();
        MallocCounter::resetPeak();
        workload->run();
        std::printf("%lld\n",
                    static_cast<long long>((MallocCounter::peak() - before + 1023) / 1024));
        return 0;
    } catch (const Qzxmsg& error) {
        std::fprintf(stderr, "%s\n", error.why());
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
