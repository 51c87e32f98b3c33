#ifndef QZXMLEXPORT_H
#define QZXMLEXPORT_H

/// @file
/// The export macro. The library is built with hidden visibility, so that only what its
/// public headers declare is part of its binary interface.

/// Marks a class, function or object of the public interface as exported from libqzxml.so.
#define QZXML_API __attribute__((visibility("default")))

#endif
