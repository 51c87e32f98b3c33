#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "QzMessage.h"
#include "QzXmlBadArgError.h"
#include "QzXmlBoundsError.h"
#include "QzXmlDomainError.h"
#include "QzXmlInternalError.h"
#include "QzXmlLengthError.h"
#include "QzXmlParseError.h"
#include "QzXmlRangeError.h"
#include "QzXmlSchemaError.h"
#include "velmoramsg.h"

namespace {

// Throws e and names the first standard handler that catches it, narrowest classes first, so
// that a class with too narrow (or too wide) a standard base shows up by name.
template <typename E>
std::string standardCatcher(const E& e) {
    try {
        throw e;
    } catch (const std::invalid_argument&) {
        return "invalid_argument";
    } catch (const std::domain_error&) {
        return "domain_error";
    } catch (const std::length_error&) {
        return "length_error";
    } catch (const std::out_of_range&) {
        return "out_of_range";
    } catch (const std::range_error&) {
        return "range_error";
    } catch (const std::logic_error&) {
        return "logic_error";
    } catch (const std::runtime_error&) {
        return "runtime_error";
    } catch (...) {
        return "none";
    }
}

// Both constructors give the same text to why() and what(); the foundation handlers catch it.
template <typename E>
void expectFamilyMember(const std::string& expectedCatcher) {
    const E fromText(QzCString("bad thing"));
    EXPECT_STREQ("bad thing", fromText.why());
    EXPECT_STREQ("bad thing", fromText.what());
    EXPECT_EQ(expectedCatcher, standardCatcher(fromText));
    EXPECT_THROW(throw fromText, QzXmlError);
    EXPECT_THROW(throw fromText, Qzxmsg);

    const E fromMessage{QzMessage(qzvelmora_BOUNDED_ARRAY())};
    EXPECT_STREQ("[BOUNDED_ARRAY][Array is bounded]", fromMessage.why());
    EXPECT_STREQ(fromMessage.why(), fromMessage.what());
}

}  // namespace

TEST(QzXmlError, EachClassHasItsStandardBaseAndOneText) {
    expectFamilyMember<QzXmlBadArgError>("invalid_argument");
    expectFamilyMember<QzXmlBoundsError>("out_of_range");
    expectFamilyMember<QzXmlDomainError>("domain_error");
    expectFamilyMember<QzXmlInternalError>("logic_error");
    expectFamilyMember<QzXmlLengthError>("length_error");
    expectFamilyMember<QzXmlRangeError>("range_error");
    expectFamilyMember<QzXmlSchemaError>("logic_error");

    EXPECT_THROW(throw QzXmlRangeError(QzCString("r")), std::runtime_error);
    EXPECT_THROW(throw QzXmlBadArgError(QzCString("b")), std::logic_error);
    EXPECT_STREQ("root", QzXmlError(QzCString("root")).why());
}

TEST(QzXmlError, ParseErrorCarriesContextAndPosition) {
    try {
        throw QzXmlParseError(QzCString("Premature EOF"), QzCString(), 3, 17);
    } catch (const QzXmlDomainError& e) {
        const auto& parse = dynamic_cast<const QzXmlParseError&>(e);
        EXPECT_STREQ("Premature EOF", parse.what());
        EXPECT_EQ(QzCString(), parse.getContext());
        EXPECT_EQ(3u, parse.getLine());
        EXPECT_EQ(17u, parse.getColumn());
        EXPECT_EQ("domain_error", standardCatcher(parse));
    }
    const QzXmlParseError e(QzMessage(qzvelmora_PARSING_ERROR()), QzCString("ctx"),
                            UINT64_C(1) << 40, 1);
    EXPECT_STREQ(QZVELMORAMSG_PARSING_ERROR.defaultText, e.why());
    EXPECT_STREQ(e.why(), e.what());
    EXPECT_EQ(QzCString("ctx"), e.getContext());
    EXPECT_EQ(UINT64_C(1) << 40, e.getLine());
}

TEST(QzXmlError, RaiseThrowsAPlainFoundationCopy) {
    const QzXmlParseError e(QzCString("deliberately sliced"), QzCString(), 1, 1);
    try {
        e.raise();
        FAIL() << "raise returned";
    } catch (const Qzxmsg& thrown) {
        EXPECT_EQ(nullptr, dynamic_cast<const QzXmlError*>(&thrown));
        EXPECT_STREQ("deliberately sliced", thrown.why());
    }
}

TEST(QzXmlError, CatalogRecordsAreFixed) {
    EXPECT_STREQ("velmora_", QZVELMORANAME);
    const struct {
        const QzCatMsg* (*accessor)();
        const QzCatMsg* record;
        int id;
        const char* text;
    } expected[] = {
        {qzvelmora_BOUNDED_ARRAY, &QZVELMORAMSG_BOUNDED_ARRAY, 28929,
         "[BOUNDED_ARRAY][Array is bounded]"},
        {qzvelmora_PARSING_ERROR, &QZVELMORAMSG_PARSING_ERROR, 28930,
         "[PARSING_ERROR][A parse error occurred while parsing the XML document]"},
        {qzvelmora_INVALID_DATETIME_FORMAT, &QZVELMORAMSG_INVALID_DATETIME_FORMAT, 28931,
         "[INVALID_DATETIME_FORMAT] Allowed datetime or date or time format MUST confirm to "
         "ISO8601"},
    };
    for (const auto& e : expected) {
        EXPECT_EQ(e.record, e.accessor());
        EXPECT_EQ(e.accessor(), e.accessor());
        EXPECT_STREQ("velmora_", e.record->catalog);
        EXPECT_EQ(e.id, e.record->id);
        EXPECT_STREQ(e.text, e.record->defaultText);
    }
}
