#include "Qzxmsg.h"

#include "QzMessage.h"

Qzxmsg::Qzxmsg(const QzMessage& msg) : msg_(msg.str()) {}

Qzxmsg::~Qzxmsg() = default;

void Qzxmsg::raise() const {
    throw *this;
}
