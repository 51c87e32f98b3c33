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

// Random steps taken on the writer's scopes and on the namespace stack alike: a scope pushed
// (action below pushes) or popped (below pops), else a declaration made by declare, which
// answers false where both refused for want of an open scope; then ask(scopes, stack, key,
// random), unless it refused. Few distinct keys (every other round) make rebinding and hiding
// frequent; many make the indexes grow and shrink through many deletions.
template <class Declare, class Ask>
void takeRandomSteps(std::uint32_t seed, unsigned actions, unsigned pushes, unsigned pops,
                     Declare declare, Ask ask) {
    std::mt19937 random(seed);
    for (int round = 0; round < 20 && !::testing::Test::HasFatalFailure(); ++round) {
        QzXmlWriterScopes scopes;
        QzXmlNamespaceStack stack;
        const int keys = round % 2 ? 4 : 300;
        auto key = [&](const char* stem) {
            return QzCString(stem + std::to_string(random() % keys));
        };
        for (int step = 0; step < 4000 && !::testing::Test::HasFatalFailure(); ++step) {
            const unsigned action = random() % actions;
            if (action < pushes) {
                scopes.pushScope();
                stack.pushScope();
            } else if (action < pops) {
                scopes.popScope();
                stack.popScope();
            } else {
                const QzXmlNamespace ns(random() % 8 ? key("p") : QzCString(), key("urn:"));
                if (!declare(scopes, stack, ns, action)) continue;
            }
            ask(scopes, stack, key, random);
        }
    }
}

}  // namespace

// The writer's scopes must answer its two questions (the default namespace's URI, a URI's
// prefix) exactly as the namespace stack does: innermost scope first,
// the earliest declaration within a scope, and the bindings a closed scope hid come back.
TEST(QzXmlWriterScopes, AnswersAsTheNamespaceStackDoes) {
    takeRandomSteps(
        20240611, 10, 3, 5,
        [](QzXmlWriterScopes& scopes, QzXmlNamespaceStack& stack, const QzXmlNamespace& ns,
           unsigned) {
            try {
                stack.addNamespace(ns);
                scopes.addNamespace(ns.getPrefix(), ns.getURI());
            } catch (const QzXmlInternalError&) {
                // No scope open: both refuse.
                EXPECT_THROW(scopes.addNamespace("p", "u"), QzXmlInternalError);
                return false;
            }
            return true;
        },
        [](const QzXmlWriterScopes& scopes, const QzXmlNamespaceStack& stack, auto& key, auto&) {
            const QzCString uri = key("urn:");
            ASSERT_EQ(stack.getPrefixForURI(uri), scopes.getPrefixForURI(uri));
            ASSERT_EQ(stack.getURIForPrefix(""), scopes.getDefaultURI());
            ASSERT_EQ(namespacesOf(stack), namespacesOf(scopes));
        });
}

// Declarations made later are decided only when a question comes; the answers must be those
// of deciding each at once, whatever came between: scopes opened and closed, declarations
// made at once, questions asked rarely and in either order, so that many wait together and
// either kind of question decides them.
TEST(QzXmlWriterScopes, DeclarationsDecidedLaterAnswerAsIfDecidedAtOnce) {
    takeRandomSteps(
        20261125, 20, 5, 9,
        [](QzXmlWriterScopes& scopes, QzXmlNamespaceStack& stack, const QzXmlNamespace& ns,
           unsigned action) {
            const QzCString& prefix = ns.getPrefix();
            const QzCString& uri = ns.getURI();
            try {
                if (action == 9 || stack.getPrefixForURI(uri).empty()) stack.addNamespace(ns);
            } catch (const QzXmlInternalError&) {
                EXPECT_THROW(scopes.addNamespaceUnlessPrefixedLater("p", "u"), QzXmlInternalError);
                return false;
            }
            if (action == 9) {
                scopes.addNamespace(prefix, uri);
            } else if (action == 10) {
                scopes.addNamespaceUnlessPrefixed(prefix, uri);
            } else {
                scopes.addNamespaceUnlessPrefixedLater(prefix, uri);
            }
            return true;
        },
        [](const QzXmlWriterScopes& scopes, const QzXmlNamespaceStack& stack, auto& key,
           auto& random) {
            if (random() % 6 != 0) return;
            const QzCString uri = key("urn:");
            if (random() % 2 == 0) {
                ASSERT_EQ(namespacesOf(stack), namespacesOf(scopes));
            }
            ASSERT_EQ(stack.getPrefixForURI(uri), scopes.getPrefixForURI(uri));
            ASSERT_EQ(stack.getURIForPrefix(""), scopes.getDefaultURI());
            ASSERT_EQ(namespacesOf(stack), namespacesOf(scopes));
        });
}

// A URI found bound to a prefix is remembered so as not to be looked up again; the memory
// must not outlive the binding, nor hold on when a nearer declaration takes the URI over.
TEST(QzXmlWriterScopes, RememberedPrefixesGoWithTheirBindings) {
    QzXmlWriterScopes scopes;
    scopes.pushScope();
    scopes.addNamespaceUnlessPrefixed("p", "u");
    scopes.pushScope();
    scopes.addNamespaceUnlessPrefixed("q", "u");
    EXPECT_EQ("p", scopes.getPrefixForURI("u").std());
    scopes.popScope();
    scopes.popScope();
    scopes.pushScope();
    scopes.addNamespaceUnlessPrefixed("q", "u");
    EXPECT_EQ("q", scopes.getPrefixForURI("u").std());

    // Taken over by the default namespace: a URI not bound to a prefix is declared again.
    scopes.pushScope();
    scopes.addNamespaceUnlessPrefixed("r", "u");
    scopes.addNamespace("", "u");
    scopes.addNamespaceUnlessPrefixed("r", "u");
    EXPECT_EQ("", scopes.getPrefixForURI("u").std());
    EXPECT_EQ(std::vector<std::string>({"=u", "r=u"}), namespacesOf(scopes));
}
