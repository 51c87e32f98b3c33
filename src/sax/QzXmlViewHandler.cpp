#include "QzXmlViewHandler.h"

QzXmlViewHandler::~QzXmlViewHandler() = default;
