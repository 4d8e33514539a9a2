#ifndef OZASSERT_H
#define OZASSERT_H

#include "ozexport.h"

/// A function that is told about each broken expectation: the path of the source file, relative to the
/// root of the project that it belongs to, and the line of the check.
///
/// It is called on the thread that ran the check, so it must be callable from any thread. It may return
/// (the operation then goes on as its documentation says), throw, or end the process.
typedef void (*OzAssertionHandler)(char const* file, int line);

/// The installed handler; null after loading, and then every check is skipped. A plain pointer without a
/// lock: it is set before threads start.
extern OZ_EXPORT OzAssertionHandler dkb_assertion_handler;

/// Told about a call of an abstract operation by classes outside the library that give their abstract
/// operations a body. The initial function writes one line to the standard error stream and aborts. The
/// library itself never calls it.
extern OZ_EXPORT void (*dkb_pure_virtual_called)(char const* class_name, char const* method_name);

/// Always 0. For code outside that wants an assertion which never holds without writing a constant
/// condition.
extern OZ_EXPORT int Oz_ASSERT_FALSE;

/// Calls the installed handler with both arguments, or does nothing if there is none.
OZ_EXPORT void Oz_assert(char* file, int line);

/// Installs the function that `handler` refers to and returns it. With `enable` false the handler is
/// removed, `handler` is not read, and null is returned. The handler so far is never returned: read
/// `dkb_assertion_handler` first in order to put it back later.
OZ_EXPORT OzAssertionHandler set_dkb_assertion_handler(OzAssertionHandler const& handler, bool enable);

/// Checks an expectation, reports if it does not hold, and goes on in any case.
///
/// With no handler a check costs one load and one branch, and `condition` is not evaluated; so it must
/// have no side effect. An operation that must not go on with a bad argument tests it again in plain code.
/// The handler is loaded once, before the condition: a condition that removes the handler is still
/// reported. Handlers may throw, so nothing that checks is noexcept. Never compiled out.
#define OZ_ASSERT(condition)                                                                                 \
  do                                                                                                         \
  {                                                                                                          \
    OzAssertionHandler const oz_assert_handler_now = dkb_assertion_handler;                                  \
    if (__builtin_expect(oz_assert_handler_now != nullptr, 0) && !(condition))                               \
      oz_assert_handler_now(__FILE__, __LINE__);                                                             \
  } while (false)

#endif
