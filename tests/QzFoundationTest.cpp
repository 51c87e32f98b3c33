#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QzBoundsErr.h"
#include "QzCTokenizer.h"
#include "QzInternalErr.h"
#include "QzInvalidPointerErr.h"
#include "QzMessage.h"
#include "QzTFunctor.h"
#include "qzfoundationmsg.h"

namespace {

std::vector<std::string> tokens(const QzCString& text, const char* delims, QzSize_T n) {
    QzCTokenizer next(text);
    std::vector<std::string> out;
    for (QzCString t = next(delims, n); !t.empty(); t = next(delims, n))
        out.push_back(t.std());
    return out;
}

class CountingBody : public QzTFunctorImpBase0 {
public:
    CountingBody(int& calls, int& destroyed) : calls_(calls), destroyed_(destroyed) {}
    ~CountingBody() override { ++destroyed_; }
    void run() const override { ++calls_; }

private:
    int& calls_;
    int& destroyed_;
};

}  // namespace

TEST(QzCTokenizer, SkipsLeadingDelimitersAndEndsWithEmptyToken) {
    using V = std::vector<std::string>;
    EXPECT_EQ((V{"a", "bc", "d"}), tokens("  a \tbc\n\nd  ", " \t\n", 3));
    EXPECT_EQ((V{}), tokens(" \t ", " \t", 2));
    EXPECT_EQ((V{}), tokens("", " ", 1));
    // NUL is a delimiter only when it is counted among them.
    const QzCString withNul("a\0b c", 5);
    EXPECT_EQ((V{std::string("a\0b", 3), "c"}), tokens(withNul, " ", 1));
    EXPECT_EQ((V{"a", "b", "c"}), tokens(withNul, " ", 2));

    QzCTokenizer next("x=1;y=2");
    EXPECT_EQ(QzCString("x"), next("=;"));
    EXPECT_EQ(QzCString("1"), next(";"));
    EXPECT_EQ(QzCString("y=2"), next(";"));
    EXPECT_EQ(QzCString(), next(";"));
}

TEST(QzFoundationErrors, RaiseKeepsTheDynamicTypeAndMessagesFormat) {
    const QzMessage bounds(&QZFOUNDATIONMSG_BOUNDS, QzSize_T{7}, QzSize_T{2});
    EXPECT_STREQ("Index 7 is out of bounds for a length of 2", bounds.str());
    EXPECT_EQ(&QZFOUNDATIONMSG_BOUNDS, bounds.record());

    const QzInternalErr internal{QzMessage(&QZFOUNDATIONMSG_INVALID_DATETIME_OP)};
    const Qzxmsg& root = internal;
    EXPECT_THROW(root.raise(), QzInternalErr);
    const QzBoundsErr boundsErr(bounds);
    try {
        static_cast<const Qzxmsg&>(boundsErr).raise();
    } catch (const QzBoundsErr& e) {
        EXPECT_STREQ(bounds.str(), e.why());
    }
    try {
        Qzxmsg("plain").raise();
    } catch (const QzInternalErr&) {
        FAIL() << "a plain Qzxmsg must not become a subclass";
    } catch (const Qzxmsg& e) {
        EXPECT_STREQ("plain", e.why());
    }
    EXPECT_THROW(throwBoundsErr(0, 0), QzBoundsErr);
}

TEST(QzTFunctor, CopiesShareTheBodyAndTheLastOneDestroysIt) {
    int calls = 0;
    int destroyed = 0;
    {
        QzTFunctor f(new CountingBody(calls, destroyed));
        EXPECT_EQ(1u, f->references());
        {
            QzTFunctor copy = f;
            QzTFunctor moved = std::move(copy);
            EXPECT_EQ(2u, f->references());
            moved();
            f();
        }
        EXPECT_EQ(1u, f->references());
        EXPECT_EQ(0, destroyed);
        f = QzTFunctor();
        EXPECT_EQ(1, destroyed);
        EXPECT_FALSE(f.isValid());
        try {
            f();
            FAIL() << "an empty functor ran";
        } catch (const QzInvalidPointerErr& e) {
            EXPECT_STREQ("Null counted pointer dereferenced", e.why());
        }
    }
    EXPECT_EQ(2, calls);
    EXPECT_EQ(1, destroyed);
}
