#ifndef OZEXPORT_H
#define OZEXPORT_H

/// Marks what liboz offers to its clients. The library is built with hidden visibility, so anything
/// without this mark stays inside. A class is marked as a whole: classes derived outside then reach its
/// protected members, and its type information is one object in the whole process.
#define OZ_EXPORT __attribute__((visibility("default")))

#endif
