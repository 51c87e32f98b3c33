#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "QzXmlInternalError.h"
#include "QzXmlNamespaceStack.h"
#include "QzXmlWriterScopes.h"

namespace {

std::vector<std::string> namespacesOf(const QzXmlWriterScopes& scopes) {
    std::vector<std::string> listed;
    scopes.forEachInnermost([&](const QzXmlNamespace& ns) {
        listed.push_back(ns.getPrefix().std() + "=" + ns.getURI().std());
    });
    return listed;
}

std::vector<std::string> namespacesOf(const QzXmlNamespaceStack& stack) {
    std::vector<std::string> listed;
    for (const QzXmlNamespace& ns : stack.getInnermostScope()) {
        listed.push_back(ns.getPrefix().std() + "=" + ns.getURI().std());
    }
    return listed;
}

}  // namespace

// The writer's scopes must answer its two questions (the default namespace's URI, a URI's
// prefix) exactly as the namespace stack does: innermost scope first,
// the earliest declaration within a scope, and the bindings a closed scope hid come back.
// Few distinct keys make rebinding and hiding frequent; deep runs make the indexes grow
// and shrink through many deletions.
TEST(QzXmlWriterScopes, AnswersAsTheNamespaceStackDoes) {
    std::mt19937 random(20240611);
    for (int round = 0; round < 20; ++round) {
        QzXmlWriterScopes scopes;
        QzXmlNamespaceStack stack;
        const int keys = round % 2 ? 4 : 300;
        auto key = [&](const char* stem) {
            return QzCString(stem + std::to_string(random() % keys));
        };
        for (int step = 0; step < 4000; ++step) {
            const unsigned action = random() % 10;
            if (action < 3) {
                scopes.pushScope();
                stack.pushScope();
            } else if (action < 5) {
                scopes.popScope();
                stack.popScope();
            } else {
                try {
                    const QzXmlNamespace ns(random() % 8 ? key("p") : QzCString(), key("urn:"));
                    stack.addNamespace(ns);
                    scopes.addNamespace(ns.getPrefix(), ns.getURI());
                } catch (const QzXmlInternalError&) {
                    // No scope open: both refuse.
                    EXPECT_THROW(scopes.addNamespace("p", "u"), QzXmlInternalError);
                    continue;
                }
            }
            const QzCString uri = key("urn:");
            ASSERT_EQ(stack.getPrefixForURI(uri), scopes.getPrefixForURI(uri));
            ASSERT_EQ(stack.getURIForPrefix(""), scopes.getDefaultURI());
            ASSERT_EQ(namespacesOf(stack), namespacesOf(scopes));
        }
    }
}

// Declarations made later are decided only when a question comes; the answers must be those
// of deciding each at once, whatever came between: scopes opened and closed, declarations
// made at once, questions asked rarely so that many wait together.
TEST(QzXmlWriterScopes, DeclarationsDecidedLaterAnswerAsIfDecidedAtOnce) {
    std::mt19937 random(20261125);
    for (int round = 0; round < 20; ++round) {
        QzXmlWriterScopes scopes;
        QzXmlNamespaceStack stack;
        const int keys = round % 2 ? 4 : 300;
        auto key = [&](const char* stem) {
            return QzCString(stem + std::to_string(random() % keys));
        };
        for (int step = 0; step < 4000; ++step) {
            const unsigned action = random() % 20;
            if (action < 5) {
                scopes.pushScope();
                stack.pushScope();
            } else if (action < 9) {
                scopes.popScope();
                stack.popScope();
            } else {
                const QzXmlNamespace ns(random() % 8 ? key("p") : QzCString(), key("urn:"));
                const QzCString& prefix = ns.getPrefix();
                const QzCString& uri = ns.getURI();
                try {
                    if (action == 9 || stack.getPrefixForURI(uri).empty()) stack.addNamespace(ns);
                } catch (const QzXmlInternalError&) {
                    EXPECT_THROW(scopes.addNamespaceUnlessPrefixedLater("p", "u"),
                                 QzXmlInternalError);
                    continue;
                }
                if (action == 9) {
                    scopes.addNamespace(prefix, uri);
                } else if (action == 10) {
                    scopes.addNamespaceUnlessPrefixed(prefix, uri);
                } else {
                    scopes.addNamespaceUnlessPrefixedLater(prefix, uri);
                }
            }
            if (random() % 6 != 0) continue;
            ASSERT_EQ(stack.getURIForPrefix(""), scopes.getDefaultURI());
            ASSERT_EQ(namespacesOf(stack), namespacesOf(scopes));
            const QzCString uri = key("urn:");
            ASSERT_EQ(stack.getPrefixForURI(uri), scopes.getPrefixForURI(uri));
        }
    }
}
