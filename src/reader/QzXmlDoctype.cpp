#include "QzXmlDoctype.h"

#include <utility>

bool QzXmlDoctype::declare(Entity entity, bool parameter) {
    auto& entities = parameter ? parameter_ : general_;
    std::string name = entity.name;
    return entities.emplace(std::move(name), std::move(entity)).second;
}

const QzXmlDoctype::Entity* QzXmlDoctype::find(std::string_view name, bool parameter) const {
    const auto& entities = parameter ? parameter_ : general_;
    const auto found = entities.find(std::string(name));
    return found == entities.end() ? nullptr : &found->second;
}

void QzXmlDoctype::declare(std::string_view element, Attribute attribute) {
    std::vector<Attribute>& declared = attributes_[std::string(element)];
    for (const Attribute& a : declared) {
        if (a.name == attribute.name) return;
    }
    declared.push_back(std::move(attribute));
}

const std::vector<QzXmlDoctype::Attribute>* QzXmlDoctype::attributes(
    std::string_view element) const {
    const auto found = attributes_.find(std::string(element));
    return found == attributes_.end() ? nullptr : &found->second;
}
