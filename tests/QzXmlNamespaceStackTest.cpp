#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

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

// Random pushes, pops and declarations over few keys, with bursts that grow the index and
// pop most of it at once, checked against a walk of the scopes after every step. URIs are
// first asked for midway, once declarations are in force.
TEST(QzXmlNamespaceStack, IndexAnswersAsAWalkOfTheScopes) {
    using Scope = std::vector<std::pair<std::string, std::string>>;
    std::vector<Scope> model;
    const auto walk = [&model](const std::string& key, bool byPrefix) {
        for (auto scope = model.rbegin(); scope != model.rend(); ++scope) {
            for (const auto& [prefix, uri] : *scope) {
                if ((byPrefix ? prefix : uri) == key) return byPrefix ? uri : prefix;
            }
        }
        return std::string();
    };
    // An outer scope that stays, so that popping a burst leaves declarations to index afresh.
    QzXmlNamespaceStack stack;
    stack.pushScope();
    stack.addNamespace(QzXmlNamespace("p0", "u0"));
    stack.addNamespace(QzXmlNamespace("p1", "u1"));
    model.push_back({{"p0", "u0"}, {"p1", "u1"}});
    std::mt19937 random(7);
    for (int step = 0; step < 20000; ++step) {
        const unsigned op = random() % 16;
        if (op < 4 || op == 15) {
            stack.pushScope();
            model.emplace_back();
        } else if (op < 11 && model.size() > 1) {
            stack.popScope();
            model.pop_back();
        }
        const int declarations = op == 15 ? 200 : op > 11 && model.size() > 1 ? 1 : 0;
        for (int i = 0; i < declarations; ++i) {
            const std::string prefix = "p" + std::to_string(random() % (op == 15 ? 300 : 8));
            const std::string uri = "u" + std::to_string(random() % 8);
            stack.addNamespace(QzXmlNamespace(QzCString(prefix), QzCString(uri)));
            model.back().emplace_back(prefix, uri);
        }
        const std::string key = std::to_string(random() % 10);
        ASSERT_EQ(walk("p" + key, true), stack.getURIForPrefix(QzCString("p" + key)).std());
        if (step > 5000) {
            ASSERT_EQ(walk("u" + key, false), stack.getPrefixForURI(QzCString("u" + key)).std());
        }
    }
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
