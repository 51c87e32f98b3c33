#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"
#include "QzXmlNamespaceStack.h"

TEST(QzXmlNamespaceStack, InnerScopesHideOuterAndEarliestWinsWithinOne) {
    QzXmlNamespaceStack stack;
    EXPECT_EQ(&QzXmlAttributeSet::EmptyString, &stack.getURIForPrefix(""));
    EXPECT_EQ(&QzXmlAttributeSet::EmptyString, &stack.getPrefixForURI("u"));
    stack.popScope();
    EXPECT_THROW(stack.addNamespace(QzXmlNamespace("p", "u")), QzXmlInternalError);
    EXPECT_TRUE(stack.getInnermostScope().empty());

    stack.pushScope();
    stack.addNamespace(QzXmlNamespace("p", "u1"));
    stack.addNamespace(QzXmlNamespace("", "default"));
    stack.addNamespace(QzXmlNamespace("p", "shadowed"));
    stack.addNamespace(QzXmlNamespace("q", "u1"));
    EXPECT_EQ(QzCString("u1"), stack.getURIForPrefix("p"));
    EXPECT_EQ(QzCString("p"), stack.getPrefixForURI("u1"));
    EXPECT_EQ(QzCString("default"), stack.getURIForPrefix(""));
    EXPECT_EQ(QzCString(), stack.getURIForPrefix("P"));

    stack.pushScope();
    stack.addNamespace(QzXmlNamespace("p", "u2"));
    ASSERT_EQ(1u, stack.getInnermostScope().size());
    EXPECT_EQ(QzCString("u2"), stack.getInnermostScope()[0].getURI());
    EXPECT_EQ(QzCString("u2"), stack.getURIForPrefix("p"));
    // Matches on the URI alone, so it answers p although p now means u2.
    EXPECT_EQ(QzCString("p"), stack.getPrefixForURI("u1"));
    stack.popScope();
    EXPECT_EQ(QzCString("u1"), stack.getURIForPrefix("p"));
    EXPECT_EQ(QzCString("q"), stack.getInnermostScope().back().getPrefix());
    stack.popScope();
    EXPECT_EQ(QzCString(), stack.getURIForPrefix("p"));
}

// Keys whose declarations have gone are kept for reuse and swept out in bulk: lookups must
// never see them, whatever was declared and popped before.
TEST(QzXmlNamespaceStack, KeysOutliveTheirDeclarationsUnseen) {
    QzXmlNamespaceStack stack;
    stack.pushScope();
    stack.addNamespace(QzXmlNamespace("keep", "k"));
    for (int i = 0; i < 1000; ++i) {
        const QzCString prefix("p" + std::to_string(i % 300));
        const QzCString uri("u" + std::to_string(i));
        stack.pushScope();
        stack.addNamespace(QzXmlNamespace(prefix, uri));
        ASSERT_EQ(uri, stack.getURIForPrefix(prefix));
        ASSERT_EQ(prefix, stack.getPrefixForURI(uri));
        stack.popScope();
        ASSERT_EQ(QzCString(), stack.getURIForPrefix(prefix));
        ASSERT_EQ(QzCString(), stack.getPrefixForURI(uri));
    }
    EXPECT_EQ(QzCString("k"), stack.getURIForPrefix("keep"));
    EXPECT_EQ(QzCString("keep"), stack.getPrefixForURI("k"));
}

TEST(QzXmlNamespaceStack, CopiesShareScopes) {
    auto original = std::make_unique<QzXmlNamespaceStack>();
    original->pushScope();
    QzXmlNamespaceStack copy(*original);
    copy.addNamespace(QzXmlNamespace("p", "u"));
    EXPECT_EQ(QzCString("u"), original->getURIForPrefix("p"));

    original->pushScope();
    original->addNamespace(QzXmlNamespace("own", "o"));
    EXPECT_EQ(QzCString(), copy.getURIForPrefix("own"));

    original.reset();  // the shared scope must outlive the stack that made it
    copy.addNamespace(QzXmlNamespace("r", "v"));
    EXPECT_EQ(QzCString("u"), copy.getURIForPrefix("p"));
    EXPECT_EQ(QzCString("r"), copy.getPrefixForURI("v"));

    QzXmlNamespaceStack assigned;
    assigned = copy;
    copy.popScope();
    EXPECT_EQ(QzCString("u"), assigned.getURIForPrefix("p"));
}
