#include <gtest/gtest.h>

#include "QzXmlProlog.h"

TEST(QzXmlProlog, PrintsOnlyThePartsItHas) {
    QzXmlProlog prolog;
    EXPECT_EQ(QzCString("<?xml version=\"1.0\"?>"), prolog.asString());
    prolog.setEncoding("UTF-8");
    prolog.setStandalone(true);
    EXPECT_EQ(QzCString("<?xml version=\"1.0\"?>"), prolog.asString());
    prolog.setHasEncoding(true);
    prolog.setHasStandalone(true);
    EXPECT_EQ(QzCString("<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"),
              prolog.asString());
    prolog.setHasEncoding(false);
    prolog.setStandalone(false);
    prolog.setVersion("1.1");
    EXPECT_EQ(QzCString("<?xml version=\"1.1\" standalone=\"no\"?>"), prolog.asString());
    EXPECT_EQ(QzCString("UTF-8"), prolog.getEncoding());
    EXPECT_TRUE(prolog.hasStandalone());
    EXPECT_FALSE(prolog.isStandalone());
}

TEST(QzXmlProlog, EqualityComparesStoredFields) {
    QzXmlProlog a, b;
    EXPECT_TRUE(a == b);
    b.setEncoding("UTF-8");  // not printed, still compared
    EXPECT_EQ(a.asString(), b.asString());
    EXPECT_TRUE(a != b);
    a = b;
    const QzXmlProlog& alias = a;
    a = alias;  // self-assignment
    EXPECT_TRUE(a == b);
    a.setStandalone(true);
    EXPECT_FALSE(a == b);
    const QzXmlProlog copy(a);
    EXPECT_TRUE(copy.isStandalone());
    EXPECT_EQ(QzCString("UTF-8"), copy.getEncoding());
}
