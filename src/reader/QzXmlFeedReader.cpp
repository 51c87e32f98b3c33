#include "QzXmlFeedReader.h"

#include "QzXmlInputWindow.h"

QzXmlFeedReader::QzXmlFeedReader(const QzXmlReaderOptions& options) {
    auto window = std::make_unique<QzXmlInputWindow>(options.chunkSize);
    window_ = window.get();
    reader_.reset(new QzXmlReader(std::move(window), options));
}

QzXmlFeedReader::~QzXmlFeedReader() = default;

void QzXmlFeedReader::feed(const char* data, std::size_t length) {
    // The window may move as it takes the bytes: the current node is copied aside first.
    reader_->detachView();
    window_->feed(data, length);
}

void QzXmlFeedReader::finish() {
    window_->finish();
}

QzXmlFeedReader::Result QzXmlFeedReader::next() {
    try {
        if (!started_) {
            reader_->startDocument();
            started_ = true;
        }
        if (reader_->eof()) return Result::End;
        reader_->readNextNode();
        return Result::Node;
    } catch (const QzXmlReader::NeedInput&) {
        return Result::NeedInput;
    }
}
