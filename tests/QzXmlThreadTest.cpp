// Several threads at once read, write, compare, convert and parse durations, each on objects
// of its own, while sharing the library's statics: the well-known namespaces and the
// reference date-times of the duration order (both built on first use, which the threads
// race to), the class constants and tables, the zones and ICU. Run under ThreadSanitizer,
// this shows that sharing to be free of data races; anywhere, that each thread gets the
// results one thread alone gets.
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "QzXmlContentHandler.h"
#include "QzXmlDuration.h"
#include "QzXmlNamespace.h"
#include "QzXmlReader.h"
#include "QzXmlSAXParser.h"
#include "QzXmlStringWriter.h"
#include "QzXmlUtils.h"

namespace {

const char* const Document =
    "<?xml version='1.0' encoding='ISO-8859-1'?>\n"
    "<o:order xmlns:o='urn:o' xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' id='7'>"
    "<o:item xsi:type='o:t'>caf\xE9 &amp; cr&#xE8;me</o:item><o:note/></o:order>";

// Releases all threads at once, so that first uses of the statics overlap.
class StartLine {
public:
    void wait() {
        std::unique_lock<std::mutex> lock(mutex_);
        wake_.wait(lock, [this] { return open_; });
    }
    void open() {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            open_ = true;
        }
        wake_.notify_all();
    }

private:
    std::mutex mutex_;
    std::condition_variable wake_;
    bool open_ = false;
};

class Transcript : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override {
        text += "<" + name.getUniqueName().std() + std::to_string(attributes.size());
    }
    void endElement(const QzXmlName& name) override { text += "/" + name.getLocalName().std(); }
    void characters(const QzCString& chars) override { text += chars.std(); }
    std::string text;
};

std::string readItem() {
    QzXmlReader reader{QzCString(Document)};
    const QzXmlAttributeSet& attributes = reader.readElementStart("o:order");
    std::string result = attributes.find(QzXmlName("id")) != attributes.end() ? "id " : "";
    reader.readElementStart(QzXmlName("item", QzXmlNamespace("", "urn:o")));
    const auto type =
        reader.getCurrentAttributes().find(QzXmlName("type", QzXmlNamespace::getXsi()));
    if (type != reader.getCurrentAttributes().end()) result += type->getValue().std() + " ";
    return result + reader.readElementValue().std();
}

std::string parseEvents() {
    Transcript transcript;
    QzXmlSAXParser parser;
    parser.setContentHandler(&transcript);
    parser.parse(QzCString(Document));
    return transcript.text;
}

std::string writeOrder() {
    QzXmlStringWriter writer;
    QzXmlAttributeSet attributes;
    attributes.add(QzXmlName("type", QzXmlNamespace::getXsi()), "o:t");
    const QzXmlName order("order", QzXmlNamespace("o", "urn:o"));
    writer.writeElementStart(order, attributes, false);
    writer.writeSimpleElement("total", "12.50 & <more>", "xsd:decimal", true);
    writer.writeElementEnd(order);
    return writer.getString().std();
}

std::string durationsAndDates() {
    const QzXmlDuration month("P1M");
    const QzXmlDuration days("P30D");
    const QzXmlDuration year("-P1Y2M3DT4H5M6.5S");
    std::string result = month < days || days < month ? "ordered " : "unordered ";
    result += QzXmlDuration("P1Y") < QzXmlDuration("P13M") ? "P1Y<P13M " : "";
    const QzDateTime start = QzXmlUtils::convertISODateStringToDateTime("2001-01-31T10:00:00Z");
    result +=
        QzXmlUtils::convertDateTimeToISOString(month + start, QzXmlUtils::ISO8601Format).std();
    return result + " " + year.asString().std();
}

std::string compareAndConvert() {
    const bool same = QzXmlUtils::compareXml(Document, "<o:order xmlns:o='urn:o' id='7'/>");
    const QzCString utf16 = QzXmlUtils::convertCharset("caf\xC3\xA9", "UTF-8", "UTF-16BE");
    return (same ? "same " : "different ") +
           QzXmlUtils::convertCharset(utf16, "UTF-16BE", "ISO-8859-1").std();
}

std::string everything() {
    return readItem() + "|" + parseEvents() + "|" + writeOrder() + "|" + durationsAndDates() + "|" +
           compareAndConvert();
}

TEST(QzXmlThreadTest, ThreadsSharingTheStaticsGetWhatOneThreadGets) {
    constexpr int Threads = 6;
    constexpr int Rounds = 20;
    StartLine startLine;
    std::vector<std::vector<std::string>> results(Threads);
    std::vector<std::thread> threads;
    for (int t = 0; t < Threads; ++t) {
        threads.emplace_back([&startLine, &out = results[t]] {
            startLine.wait();
            for (int i = 0; i < Rounds; ++i)
                out.push_back(everything());
        });
    }
    startLine.open();
    for (std::thread& thread : threads)
        thread.join();

    const std::string alone = everything();
    EXPECT_EQ(alone,
              "id o:t caf\xC3\xA9 & cr\xC3\xA8me|"
              "<urn:o::order3<urn:o::item1caf\xC3\xA9 & cr\xC3\xA8me/item<urn:o::note0/note/order|"
              "<o:order xmlns:o=\"urn:o\" xsi:type=\"o:t\" "
              "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\"><total "
              "xsi:type=\"xsd:decimal\">12.50 &amp; &lt;more&gt;</total>\n</o:order>|"
              "unordered P1Y<P13M 2001-02-28T10:00:00Z -P1Y2M3DT4H5M6.5S|different caf\xE9");
    for (const std::vector<std::string>& thread : results) {
        ASSERT_EQ(thread.size(), static_cast<std::size_t>(Rounds));
        for (const std::string& result : thread)
            EXPECT_EQ(result, alone);
    }
}

}  // namespace
