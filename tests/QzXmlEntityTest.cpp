#include <gtest/gtest.h>

#include <string>

#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "StrictReading.h"

namespace {

// "line:column message" of the error that stops a strict walk, or the nodes read, one token
// each: "<name a=v", "/", "'text'".
std::string read(const std::string& doc, const QzXmlReaderOptions& options = strict()) {
    std::string out;
    try {
        QzXmlReader reader(QzCString(doc), options);
        while (!reader.eof()) {
            reader.readNextNode();
            switch (reader.getNodeType()) {
                case QzXmlReader::Content:
                    out += "'" + reader.getValue().std() + "' ";
                    break;
                case QzXmlReader::EndTag:
                    out += "/ ";
                    break;
                default:
                    out += "<" + reader.getCurrentName().getLocalName().std();
                    for (const QzXmlAttribute& a : reader.getCurrentAttributes())
                        out +=
                            " " + a.getName().getQualifiedName().std() + "=" + a.getValue().std();
                    out += reader.getNodeType() == QzXmlReader::EmptyElement ? "/ " : " ";
            }
        }
    } catch (const QzXmlParseError& e) {
        return placed(e);
    }
    return out;
}

std::string laughs(int levels) {
    std::string doc = "<!DOCTYPE r [<!ENTITY l0 'lol'>";
    for (int i = 1; i <= levels; ++i) {
        doc += "<!ENTITY l" + std::to_string(i) + " '";
        for (int k = 0; k < 10; ++k)
            doc += "&l" + std::to_string(i - 1) + ";";
        doc += "'>";
    }
    return doc + "]>\n<r>&l" + std::to_string(levels) + ";</r>";
}

}  // namespace

TEST(QzXmlEntities, ExpandedInContentAndValues) {
    const std::string subset =
        "<!DOCTYPE r [<!ENTITY e '<b x=\"&#38;lt;\">t&amp;&#38;#60;</b>'><!ENTITY lt '&#38;#60;'>"
        "<!ENTITY v 'a\"&#9;b'><!ENTITY % p '<!ENTITY f \"from a parameter entity\">'>%p;]>";
    EXPECT_EQ(read(subset + "<r>1&e;2&lt;&f;</r>"),
              "<r '1' <b x=< 't&<' / '2<from a parameter entity' / ");
    // In a value, quotes from an entity are data and its whitespace becomes spaces, but a
    // character reference keeps what it names.
    EXPECT_EQ(read(subset + "<r a='&v;&#9;'/>"), "<r a=a\" b\t/ ");
    // A whole element read from an entity's replacement text, as that text holds it.
    QzXmlReader reader(QzCString(subset + "<r>&e;</r>"), strict());
    reader.readElementStart("r");
    EXPECT_EQ(reader.readElement().std(), "<b x=\"&lt;\">t&amp;&#60;</b>");
    // The first declaration binds.
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e '1'><!ENTITY e '2'>]><r>&e;</r>"), "<r '1' / ");
}

TEST(QzXmlEntities, ConstraintsOnReferences) {
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e '<b>'>]>\n<r>&e;</b></r>"),
              "2:4 An element started in an entity does not end in it (in the replacement text of "
              "an entity)");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e '</r><r>'>]>\n<r>&e;</r>"),
              "2:4 The end tag </r> closes an element started outside the entity (in the "
              "replacement text of an entity)");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY a 'x&b;'><!ENTITY b '&a;'>]><r>&a;</r>"),
              "1:54 An entity refers to itself, directly or through others (in the replacement "
              "text of an entity)");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY u SYSTEM 'u' NDATA n>]><r>&u;</r>"),
              "1:49 The entity 'u' is unparsed (NDATA) and cannot be referenced");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY x SYSTEM 'x.xml'>]><r a='&x;'/>"),
              "1:48 The external entity 'x' cannot be referenced in an attribute value");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY x SYSTEM 'x.xml'>]><r>&x;</r>"),
              "1:45 The entity 'x' is external, and external entities are rejected");
    QzXmlReaderOptions skipping = strict();
    skipping.rejectExternalEntities = false;
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY x SYSTEM 'x.xml'>]><r>&x;</r>", skipping), "<r '&x;' / ");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e 'x'>]><r>&f;</r>"),
              "1:34 The entity 'f' is not declared");
    // Declarations that may lie in what is not read make an undeclared entity a skip.
    EXPECT_EQ(read("<!DOCTYPE r SYSTEM 'r.dtd'><r>&f;</r>"), "<r '&f;' / ");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY % p ''>%p;]><r>&f;</r>"), "<r '&f;' / ");
    EXPECT_EQ(read("<?xml version='1.0' standalone='yes'?><!DOCTYPE r SYSTEM 'r.dtd'><r>&f;</r>"),
              "1:69 The entity 'f' is not declared");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY lt '<'>]><r/>"),
              "1:23 The predefined entity 'lt' may be declared only as its own character");
}

TEST(QzXmlEntities, InternalSubsetGrammar) {
    EXPECT_EQ(read("<!DOCTYPE r [<!ELEMENT r (a|b)*><!ELEMENT a (#PCDATA|b)*><!ELEMENT b EMPTY>"
                   "<!ATTLIST r id ID #IMPLIED k (x|y) 'x'><!NOTATION n PUBLIC 'p'>"
                   "<?pi data?><!-- c -->]><r/>"),
              "<r k=x/ ");
    EXPECT_EQ(read("<!DOCTYPE r [<!ELEMENT r (a|b,c)>]><r/>"),
              "1:30 Expected '|' or ')' in the choice, found ','");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e \"%p;\">]><r/>"),
              "1:26 A parameter-entity reference is not allowed inside a declaration of the "
              "internal subset");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY a:b 'x'>]><r/>"),
              "1:23 An entity name must not contain a colon");
    EXPECT_EQ(read("<!DOCTYPE r [<![INCLUDE[]]>]><r/>"),
              "1:16 Expected ELEMENT, ATTLIST, ENTITY or NOTATION after '<!', found '['");
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY % p '<!ELEMENT r'>%p; ANY>]><r/>"),
              "1:41 Expected whitespace after the element name, found the end of the document "
              "(in the replacement text of an entity)");
}

TEST(QzXmlEntities, DeclaredAttributes) {
    const std::string subset =
        "<!DOCTYPE r [<!ATTLIST r xmlns:p CDATA #FIXED 'urn:p' p:a CDATA 'd' t NMTOKENS '  x  y '"
        " c CDATA #IMPLIED><!ATTLIST r t CDATA 'ignored' u NMTOKEN #IMPLIED>]>";
    // Defaults fill in, namespace declarations included; tokenized values are normalised.
    EXPECT_EQ(read(subset + "<r u='  v  ' c='  w  '/>"),
              "<r p:a=d c=  w   xmlns:p=urn:p t=x y u=v/ ");
    QzXmlReader reader(QzCString(subset + "<r/>"), strict());
    reader.readNextNode();
    EXPECT_EQ(reader.getCurrentAttributes()
                  .find(QzXmlName("a", QzXmlNamespace("p", "urn:p")))
                  ->getValue()
                  .std(),
              "d");
}

TEST(QzXmlEntities, ExpansionWithinLimits) {
    EXPECT_EQ(read(laughs(9)),
              "2:4 Entity expansion exceeds maxEntityAmplification (100) (in the replacement text "
              "of an entity)");
    std::string chain = "<!DOCTYPE r [";
    for (int i = 0; i < 50; ++i)
        chain += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i + 1) + ";'>";
    chain += "<!ENTITY e50 'end'>]>\n<r>&e0;</r>";
    EXPECT_EQ(
        read(chain),
        "2:4 Entity nesting exceeds maxEntityDepth (40) (in the replacement text of an entity)");
    QzXmlReaderOptions deeper = strict();
    deeper.maxEntityDepth = 60;
    EXPECT_EQ(read(chain, deeper), "<r 'end' / ");
    // A text that begins in an entity and ends after it is placed where reading stands.
    QzXmlReaderOptions shortTexts = strict();
    shortTexts.maxTextLength = 4;
    EXPECT_EQ(read("<!DOCTYPE r [<!ENTITY e '<b/>xyz'>]><r>&e;tail</r>", shortTexts),
              "1:47 A text's length exceeds maxTextLength (4)");
    // Small expansions stay under the threshold whatever their ratio.
    EXPECT_EQ(read(laughs(3)).size(), std::string("<r '' / ").size() + 3000);
}
