// pugixml: parse in place into its tree, then walk every node. It does not resolve
// namespaces, so names are qualified names and declarations are ordinary attributes.

#include <pugixml.hpp>

#include <cstring>

#include "Workload.h"

namespace {

std::uint64_t length(const char* text) {
    return std::strlen(text);
}

class PugixmlWorkload : public Workload {
public:
    void load(const Document& document) override { input_.assign(document); }
    void prepare() override { input_.restore(); }
    std::uint64_t run() override {
        std::uint64_t sum = 0;
        for (const Document::Part& part : input_.parts()) {
            document_.load_buffer_inplace(input_.data() + part.offset, part.size);
            sum += walk(document_);
        }
        return sum;
    }

private:
    // Iterative pre-order walk: the deep corpus nests thousands of levels.
    static std::uint64_t walk(pugi::xml_node root) {
        std::uint64_t sum = 0;
        pugi::xml_node node = root.first_child();
        while (node) {
            sum += visit(node);
            if (node.first_child()) {
                node = node.first_child();
                continue;
            }
            while (node && !node.next_sibling()) {
                node = node.parent();
                if (node == root) return sum;
            }
            if (node) node = node.next_sibling();
        }
        return sum;
    }

    static std::uint64_t visit(pugi::xml_node node) {
        switch (node.type()) {
            case pugi::node_element: {
                std::uint64_t sum = length(node.name());
                for (pugi::xml_attribute attribute : node.attributes()) {
                    sum += length(attribute.name()) + length(attribute.value());
                }
                return sum;
            }
            case pugi::node_pcdata:
            case pugi::node_cdata:
                return length(node.value());
            default:
                return 0;
        }
    }

    InputCopy input_;
    pugi::xml_document document_;
};

}  // namespace

std::vector<WorkloadEntry> pugixmlWorkloads() {
    return {makeEntry<PugixmlWorkload>("pugixml", "pugixml in place + walk")};
}
