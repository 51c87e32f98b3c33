#include <gtest/gtest.h>

#include "QzXmlName.h"
#include "QzXmlNamespace.h"

namespace {

const QzCString Xsi1999("http://www.w3.org/1999/XMLSchema-instance");
const QzCString Xsd1999("http://www.w3.org/1999/XMLSchema");

QzXmlName name(const char* local, const char* prefix, const char* uri) {
    return QzXmlName(local, QzXmlNamespace(prefix, uri));
}

}  // namespace

TEST(QzXmlName, QualifiedAndUniqueNames) {
    EXPECT_EQ(QzCString("x"), name("x", "", "").getQualifiedName());
    EXPECT_EQ(QzCString("x"), name("x", "", "").getUniqueName());
    EXPECT_EQ(QzCString("xsi:type"), name("type", "xsi", "").getQualifiedName());
    EXPECT_EQ(QzCString("type"), name("type", "xsi", "").getUniqueName());
    EXPECT_EQ(QzCString("item"), name("item", "", "urn:a").getQualifiedName());
    EXPECT_EQ(QzCString("urn:a::item"), name("item", "", "urn:a").getUniqueName());
    EXPECT_EQ(QzCString("p:item"), name("item", "p", "urn:a").asString());
}

TEST(QzXmlName, EqualityAndOrderIgnorePrefix) {
    EXPECT_TRUE(name("x", "a", "u") == name("x", "b", "u"));
    EXPECT_EQ(0, name("x", "a", "u").compareTo(name("x", "b", "u")));
    EXPECT_TRUE(name("x", "a", "u") != name("x", "a", "U"));
    EXPECT_TRUE(name("a", "", "") < name("ab", "", ""));
    EXPECT_TRUE(name("ab", "", "") < name("b", "", ""));
    EXPECT_TRUE(name("Z", "", "") < name("a", "", ""));
    EXPECT_TRUE(name("x", "z", "u1") < name("x", "a", "u2"));
    EXPECT_FALSE(name("b", "", "") < name("a", "", "zzz"));  // local name decides first
    // Exactly -1 and +1, and bytes compare unsigned.
    EXPECT_EQ(-1, name("a", "", "").compareTo(name("c", "", "")));
    EXPECT_EQ(1, name("ab", "", "").compareTo(name("a", "", "")));
    EXPECT_EQ(1, name("\xC3", "", "").compareTo(name("z", "", "")));
    EXPECT_EQ(-1, name("x", "", "").compareTo(name("x", "", "u")));
}

TEST(QzXmlNamespace, WellKnownNamespacesAndMatchers) {
    EXPECT_EQ(&QzXmlNamespace::getXsi(), &QzXmlNamespace::getXsi());
    EXPECT_EQ(QzCString("xmlns"), QzXmlNamespace::getXmlns().getPrefix());
    EXPECT_EQ(QzCString(), QzXmlNamespace::getXmlns().getURI());
    EXPECT_EQ(QzCString("xsi"), QzXmlNamespace::getXsi().getPrefix());
    EXPECT_EQ(QzCString("http://www.w3.org/2001/XMLSchema-instance"),
              QzXmlNamespace::getXsi().getURI());
    EXPECT_EQ(QzCString("xsd"), QzXmlNamespace::getXsd().getPrefix());
    EXPECT_EQ(QzCString("http://www.w3.org/2001/XMLSchema"), QzXmlNamespace::getXsd().getURI());
    EXPECT_TRUE(QzXmlNamespace::getEmptyNamespace().getPrefix().empty());

    EXPECT_TRUE(QzXmlNamespace::matchXmlns(QzXmlNamespace::getEmptyNamespace()));
    EXPECT_TRUE(QzXmlNamespace::matchXmlns(QzXmlNamespace("anything", "")));
    EXPECT_FALSE(QzXmlNamespace::matchXmlns(QzXmlNamespace::getXsi()));
    EXPECT_TRUE(QzXmlNamespace::matchXsi(QzXmlNamespace("p", Xsi1999)));
    EXPECT_TRUE(QzXmlNamespace::matchXsi(QzXmlNamespace("", QzXmlNamespace::getXsi().getURI())));
    EXPECT_FALSE(QzXmlNamespace::matchXsi(QzXmlNamespace("xsi", Xsd1999)));
    EXPECT_TRUE(QzXmlNamespace::matchXsd(QzXmlNamespace("p", Xsd1999)));
    EXPECT_FALSE(QzXmlNamespace::matchXsd(QzXmlNamespace::getXsi()));
    EXPECT_FALSE(QzXmlNamespace::matchXsd(QzXmlNamespace("xsd", Xsi1999)));
    EXPECT_FALSE(
        QzXmlNamespace::matchXsd(QzXmlNamespace("xsd", "HTTP://www.w3.org/2001/XMLSchema")));
}
