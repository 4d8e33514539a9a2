#ifndef OZERR_H
#define OZERR_H

#include "ozexport.h"
#include "ozresult.h"

/// The library's own package of error conditions: general numbers with an English text each.
///
/// Another package that takes these numbers over may use all below OZ_ERR_LIMIT, which is this package's
/// alone.
///
/// Threads: any; only constants are read.
/// Reports: a number outside the table, and OZ_ERR_LIMIT of another package; both count as OZ_ERR_UNKNOWN.
/// Cost: no allocation.
class OZ_EXPORT OzErr
{
public:
  enum ErrorNumber : int
  {
    OZ_ERR_UNKNOWN = -1,
    OZ_ERR_NONE = 0,
    OZ_ERR_NO_SPACE = 1,
    OZ_ERR_INVALID_ARGUMENT = 2,
    OZ_ERR_UNINITIALIZED_OBJECT = 3,
    OZ_ERR_INVALID_OBJECT = 4,
    OZ_ERR_UNPROCESSED_OBJECT = 5,
    OZ_ERR_NULL_POINTER = 6,
    OZ_ERR_SERVICE_FAILED = 7,
    OZ_ERR_INCOMPLETE_RESULT = 8,
    OZ_ERR_NOT_IMPLEMENTED = 9,
    OZ_ERR_CANCELED = 10,
    // 11 to 15 are reserved and have an empty text.
    OZ_ERR_LIMIT = 16
  };

  /// Gives `result` the severity and the error condition; its text is made when it is asked for.
  static void make_result(OzResult::CodeID code, ErrorNumber number, OzResult& result);

  /// The number of an error condition, OZ_ERR_UNKNOWN if there is none or if it isn't valid. Numbers up to
  /// 15 pass for every package. oz_error_number() hands out what is stored instead.
  static ErrorNumber error_number(OzResult const& result);

  /// The text of `number`, that of OZ_ERR_UNKNOWN if it isn't valid; never null. It lives as long as the
  /// library.
  static char const* translate_error_number(OzString const* const& package, int number);

  static OzString const class_name_;     // its address is the identity of this package
  static OzString const* const package_; // holds that address, for the results of make_result
};

#endif
