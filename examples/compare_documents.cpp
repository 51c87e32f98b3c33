// Compares two documents as `qzxml compare` does, and when they differ, walks both with pull
// readers to show the first place where they part: the element path and the two nodes.
// Usage: compare_documents A B
#include <QzXmlParseError.h>
#include <QzXmlReader.h>
#include <QzXmlUtils.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

QzCString load(const char* path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error(std::string(path) + ": cannot read");
    QzCString text;
    text.readFile(in);
    return text;
}

bool isBlank(const QzCString& text) {
    return QzXmlUtils::stripWhiteSpaceAndNewlines(text, QzCString::both).empty();
}

// One document read node by node, skipping whitespace-only text, with the path of the
// elements open around the current node.
class Walk {
public:
    explicit Walk(const QzCString& text) : reader_(text) {}

    // Moves to the next node that is not whitespace-only text; false at the end.
    bool next() {
        if (reader_.getNodeType() == QzXmlReader::EndTag) path_.pop_back();
        while (!reader_.eof()) {
            reader_.readNextNode();
            if (reader_.getNodeType() == QzXmlReader::Content && isBlank(reader_.getValue())) {
                continue;
            }
            if (reader_.getNodeType() == QzXmlReader::StartTag) {
                path_.push_back(reader_.getCurrentName().getQualifiedName().std());
            }
            return true;
        }
        return false;
    }

    bool sameNode(const Walk& other) const {
        const QzXmlReader& a = reader_;
        const QzXmlReader& b = other.reader_;
        if (a.getNodeType() != b.getNodeType()) return false;
        if (a.getNodeType() == QzXmlReader::Content) return a.getValue() == b.getValue();
        return a.getCurrentName() == b.getCurrentName() &&
               (a.getNodeType() == QzXmlReader::EndTag ||
                QzXmlUtils::compareAttributeSet(a.getCurrentAttributes(),
                                                b.getCurrentAttributes()));
    }

    std::string path() const {
        std::string text;
        for (const std::string& name : path_)
            text += "/" + name;
        return text.empty() ? "/" : text;
    }

    // The current node, written out.
    std::string node() const {
        const std::string name = reader_.getCurrentName().getQualifiedName().std();
        switch (reader_.getNodeType()) {
            case QzXmlReader::Content:
                return "text \"" + reader_.getValue().std() + "\"";
            case QzXmlReader::EndTag:
                return "</" + name + ">";
            default:
                break;
        }
        std::string tag = "<" + name;
        for (const QzXmlAttribute& attribute : reader_.getCurrentAttributes()) {
            tag += " " + attribute.getName().getQualifiedName().std() + "=\"" +
                   attribute.getValue().std() + "\"";
        }
        return tag + (reader_.getNodeType() == QzXmlReader::EmptyElement ? "/>" : ">");
    }

private:
    QzXmlReader reader_;
    std::vector<std::string> path_;
};

void explain(const QzCString& first, const QzCString& second) {
    Walk a(first), b(second);
    for (;;) {
        const bool moreA = a.next(), moreB = b.next();
        if (!moreA || !moreB) {
            std::cout << "  " << (moreA ? "B" : "A") << " ends first\n";
            return;
        }
        if (!a.sameNode(b)) {
            std::cout << "  first difference in " << a.path() << ":\n    A: " << a.node()
                      << "\n    B: " << b.node() << '\n';
            return;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: compare_documents A B\n";
        return 2;
    }
    try {
        const QzCString first = load(argv[1]), second = load(argv[2]);
        if (QzXmlUtils::compareXml(first, second)) {
            std::cout << "equivalent\n";
            return 0;
        }
        std::cout << "different\n";
        explain(first, second);
        return 1;
    } catch (const QzXmlParseError& e) {
        std::cerr << e.getLine() << ':' << e.getColumn() << ": " << e.what() << '\n';
    } catch (const std::exception& e) {
        std::cerr << e.what() << '\n';
    }
    return 2;
}
