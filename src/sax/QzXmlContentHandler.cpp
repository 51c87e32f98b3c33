#include "QzXmlContentHandler.h"

void QzXmlContentHandler::prolog(const QzXmlProlog&) {}

QzXmlContentHandler::~QzXmlContentHandler() = default;
