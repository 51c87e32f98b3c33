#include "QzLocale.h"

QzLocale::~QzLocale() = default;
