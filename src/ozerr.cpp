#include "ozerr.h"

#include "ozassert.h"

namespace
{
// Begins with the text of OZ_ERR_UNKNOWN.
char const* const MESSAGES[] = {
    "Error condition unknown by this package",
    "No error condition detected",
    "Not enough space",
    "Invalid argument",
    "Uninitialized object(s) found",
    "Invalid object(s) found",
    "Some objects could not be processed",
    "NULL-pointer passed",
    "A service from an other package failed",
    "Result model may be incomplete",
    "Service is not (yet) implemented",
    "Operation was canceled",
    "",
    "",
    "",
    "",
    "",
    "",
};
static_assert(sizeof MESSAGES / sizeof MESSAGES[0] == OzErr::OZ_ERR_LIMIT - OzErr::OZ_ERR_UNKNOWN + 1,
              "a text for each number");

OzErr::ErrorNumber validated(OzString const* package, int number)
{
  bool const in_table = number >= OzErr::OZ_ERR_UNKNOWN && number <= OzErr::OZ_ERR_LIMIT;
  OZ_ASSERT(in_table);
  if (!in_table)
    return OzErr::OZ_ERR_UNKNOWN;

  bool const own_or_shared = number != OzErr::OZ_ERR_LIMIT || package == &OzErr::class_name_;
  OZ_ASSERT(own_or_shared);
  if (!own_or_shared)
    return OzErr::OZ_ERR_UNKNOWN;

  return static_cast<OzErr::ErrorNumber>(number);
}
} // namespace

OzString const OzErr::class_name_("OzErr");
OzString const* const OzErr::package_ = &OzErr::class_name_;

void OzErr::make_result(OzResult::CodeID code, ErrorNumber number, OzResult& result)
{
  result.set_error_condition(code, number, &package_, &translate_error_number);
}

OzErr::ErrorNumber OzErr::error_number(OzResult const& result)
{
  OzResult::CodeID code = OzResult::OK;
  int number = OZ_ERR_UNKNOWN;
  OzString const* const* package = nullptr;
  result.get_error_condition(code, number, package);
  return package == nullptr ? OZ_ERR_UNKNOWN : validated(*package, number);
}

char const* OzErr::translate_error_number(OzString const* const& package, int number)
{
  return MESSAGES[validated(package, number) - OZ_ERR_UNKNOWN];
}
