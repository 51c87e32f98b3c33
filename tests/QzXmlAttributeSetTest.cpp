#include <gtest/gtest.h>

#include <string>

#include "QzXmlAttributeSet.h"
#include "QzXmlElementImp.h"

namespace {

const QzXmlNamespace Xsi = QzXmlNamespace::getXsi();

// The qualified names and values in set order, as "name=value;...".
std::string listing(const QzXmlAttributeSet& set) {
    std::string out;
    for (const QzXmlAttribute& a : set) {
        out += a.getName().getQualifiedName().std() + "=" + a.getValue().std() + ";";
    }
    return out;
}

QzXmlName plain(const char* local) {
    return QzXmlName(local);
}

}  // namespace

TEST(QzXmlAttributeSet, KeepsNameOrderAndKeysWithoutPrefix) {
    QzXmlAttributeSet set;
    set.add(plain("b"), "1");
    set.add(QzXmlAttribute("type", "int", Xsi));
    set.add(plain("a"), "2");
    set.add(QzXmlName("type", QzXmlNamespace("my", Xsi.getURI())), "long");
    set.add(QzXmlName("type"), "plain");
    EXPECT_EQ("a=2;b=1;type=plain;xsi:type=long;", listing(set));
    EXPECT_TRUE(set.contains(QzXmlName("type", QzXmlNamespace("other", Xsi.getURI()))));
    EXPECT_FALSE(set.contains(QzXmlName("type", QzXmlNamespace("xsi", "urn:x"))));

    // The reader renames through iterators; the set keeps its order and does not re-sort.
    set.begin()->getName().setLocalName("z");
    EXPECT_EQ("z=2;b=1;type=plain;xsi:type=long;", listing(set));
    EXPECT_EQ(QzCString("b"), set.erase(set.begin())->getName().getLocalName());
    EXPECT_EQ(3u, set.size());

    QzXmlAttributeSet copy(set);
    const QzXmlAttributeSet& alias = copy;
    copy = alias;  // self-assignment
    copy.add(plain("b"), "changed");
    EXPECT_EQ("b=changed;type=plain;xsi:type=long;", listing(copy));
    EXPECT_EQ("b=1;type=plain;xsi:type=long;", listing(set));
    set.clear();
    EXPECT_TRUE(set.empty());
}

TEST(QzXmlAttributeSet, NamespaceDeclarations) {
    QzXmlAttributeSet set;
    EXPECT_EQ(&QzXmlAttributeSet::EmptyString, &set.getDefaultNamespaceAttribute());
    set.setDefaultNamespaceAttribute("");
    EXPECT_EQ(1u, set.size());
    EXPECT_EQ("xmlns=;", listing(set));
    set.setDefaultNamespaceAttribute(QzXmlNamespace("ignored", "urn:d"));
    EXPECT_EQ(QzCString("urn:d"), set.getDefaultNamespaceAttribute());

    set.addNamespaceAttribute(QzXmlNamespace("p", "urn:p"));
    set.add(plain("o"), "ordinary");
    EXPECT_EQ("o=ordinary;xmlns:p=urn:p;xmlns=urn:d;", listing(set));
    // Lookup by prefix ignores the namespace: its URI, and whether it is a declaration at all.
    EXPECT_EQ(QzCString("urn:p"),
              set.findNamespaceAttribute(QzXmlNamespace("p", "urn:q"))->getValue());
    EXPECT_EQ(QzCString("ordinary"), set.findNamespaceByPrefix("o")->getValue());
    EXPECT_EQ(set.end(), set.findNamespaceAttribute(QzCString("q")));

    set.removeNamespaceAttribute("o");  // an unqualified attribute has the same key
    set.removeDefaultNamespaceAttribute();
    EXPECT_EQ("xmlns:p=urn:p;", listing(set));
    set.removeNamespaceAttribute("p");
    EXPECT_TRUE(set.empty());
}

TEST(QzXmlAttributeSet, CompareToLooksAtNamesOnly) {
    QzXmlAttributeSet a, b;
    EXPECT_EQ(0, a.compareTo(b));
    b.add(plain("x"), "1");
    EXPECT_EQ(-1, a.compareTo(b));
    EXPECT_EQ(1, b.compareTo(a));
    a.add(QzXmlName("x", QzXmlNamespace("p", "")), "different value");
    EXPECT_EQ(0, a.compareTo(b));
    a.add(plain("y"), "");
    b.add(plain("z"), "");
    EXPECT_EQ(-1, a.compareTo(b));
    EXPECT_EQ(1, b.compareTo(a));
    b.add(plain("c"), "");  // b: c x z against a: x y
    EXPECT_EQ(1, a.compareTo(b));
}

TEST(QzXmlElementImp, ForwardsToItsAttributeSet) {
    QzXmlElementImp element(QzXmlName("e", QzXmlNamespace("p", "urn:e")));
    EXPECT_EQ(QzCString("urn:e"), element.getNamespace().getURI());
    element.addAttribute(plain("a"), "1");
    EXPECT_TRUE(element.hasAttribute(QzXmlAttribute(plain("a"), "other value")));
    EXPECT_EQ(QzCString("1"), element.findAttribute(QzXmlAttribute(plain("a"), "x"))->getValue());
    EXPECT_EQ(element.attributesEnd(), element.findAttribute(QzXmlName("a", Xsi)));

    element.unsetDefaultNamespaceAttribute();
    EXPECT_EQ(2u, element.attributeCount());
    EXPECT_EQ(QzCString(), element.getDefaultNamespaceAttribute());
    EXPECT_EQ(element.attributesEnd(), element.removeAttribute(element.attributesEnd()));
    EXPECT_EQ(2u, element.attributeCount());

    element.addNamespaceAttribute(QzXmlNamespace("q", "urn:q"));
    element.removeNamespaceAttribute(QzXmlNamespace("q", "not compared"));
    element.removeAttribute(QzXmlAttribute(plain("a"), "not compared"));
    EXPECT_EQ("xmlns=;", listing(element.getAttributes()));

    QzXmlElementImp copy(element);
    copy.setName(QzXmlName("f"));
    copy.clearAttributes();
    EXPECT_EQ(QzCString("p:e"), element.getName().getQualifiedName());
    EXPECT_EQ(1u, element.attributeCount());
}
