#include <sstream>

#include "Workload.h"

std::vector<WorkloadSpec> allWorkloads() {
    std::vector<WorkloadSpec> all;
    for (auto group :
         {qzxmlWorkloads, libxml2Workloads, expatWorkloads, xercesWorkloads, pugixmlWorkloads}) {
        for (WorkloadSpec& spec : group())
            all.push_back(std::move(spec));
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

std::vector<WorkloadSpec> selectWorkloads(const std::string& filter) {
    std::vector<WorkloadSpec> selected;
    for (WorkloadSpec& spec : allWorkloads()) {
        if (matchesFilter(spec.name, filter)) selected.push_back(std::move(spec));
    }
    return selected;
}
