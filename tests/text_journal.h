#ifndef TEXT_JOURNAL_H
#define TEXT_JOURNAL_H

#include "ozfilejournal.h"

#include <string>

/// A journal that keeps its text, in the number format of a journal that was given no other.
class TextJournal : public OzFileJournal
{
public:
  std::string text() { return buffer().as_const_c_string(); }

  /// The text so far, which is forgotten.
  std::string take()
  {
    std::string const taken = text();
    flush_buffer();
    return taken;
  }
};

#endif
