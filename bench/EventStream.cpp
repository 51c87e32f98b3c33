#include "EventStream.h"

#include <string>
#include <unordered_map>

#include "QzXmlReader.h"

namespace {

std::string nameKey(const QzXmlName& name) {
    return name.getURI().std() + '\n' + name.getPrefix().std() + '\n' + name.getLocalName().std();
}

}  // namespace

EventStream::EventStream(const Document& document) : attributeSets_(1) {
    std::unordered_map<std::string, std::uint32_t> known;
    std::vector<unsigned char> buffer(document.data(), document.data() + document.size());
    QzXmlReader reader(buffer.data(), buffer.size());
    while (!reader.eof()) {
        reader.readNextNode();
        const QzXmlName& name = reader.getCurrentName();
        switch (reader.getNodeType()) {
            case QzXmlReader::StartTag:
            case QzXmlReader::EmptyElement: {
                auto [at, added] = known.emplace(nameKey(name), names_.size());
                if (added) names_.push_back(name);
                const Kind kind = reader.getNodeType() == QzXmlReader::StartTag ? Start : Empty;
                events_.push_back(
                    {kind, at->second, attributeIndex(reader.getCurrentAttributes())});
                break;
            }
            case QzXmlReader::EndTag:
                events_.push_back({End, known.at(nameKey(name)), 0});
                break;
            case QzXmlReader::Content:
                events_.push_back({Text, static_cast<std::uint32_t>(texts_.size()), 0});
                texts_.push_back(reader.getValue());
                break;
            default:
                return;
        }
    }
}

std::uint32_t EventStream::attributeIndex(const QzXmlAttributeSet& attributes) {
    if (attributes.empty()) return 0;
    attributeSets_.push_back(attributes);
    return static_cast<std::uint32_t>(attributeSets_.size() - 1);
}
