#include <sstream>

#include "Workload.h"

std::vector<WorkloadEntry> allWorkloads() {
    std::vector<WorkloadEntry> all;
    for (auto group :
         {qzxmlWorkloads, libxml2Workloads, expatWorkloads, xercesWorkloads, pugixmlWorkloads}) {
        for (WorkloadEntry& entry : group())
            all.push_back(std::move(entry));
    }
    return all;
}

bool matchesFilter(const std::string& name, const std::string& filter) {
    if (filter.empty()) return true;
    std::istringstream prefixes(filter);
    for (std::string prefix; std::getline(prefixes, prefix, ',');) {
        if (!prefix.empty() && name.compare(0, prefix.size(), prefix) == 0) return true;
    }
    return false;
}

std::unique_ptr<Workload> makeWorkload(const std::string& name) {
    for (const WorkloadEntry& entry : selectWorkloads(name)) {
        if (entry.name == name) return entry.make();
    }
    return nullptr;
}

std::vector<WorkloadEntry> selectWorkloads(const std::string& filter) {
    std::vector<WorkloadEntry> selected;
    for (WorkloadEntry& entry : allWorkloads()) {
        if (matchesFilter(entry.name, filter)) selected.push_back(std::move(entry));
    }
    return selected;
}
