#include "ozfilejournal.h"

#include <algorithm>
#include <cstring>

OzFileJournal::OzFileJournal()
{
  OzFileJournal::set_width(16);
  OzFileJournal::set_precision(10);
}

OzFileJournal::OzFileJournal(char const* name, int precision)
{
  OzFileJournal::set_precision(precision);
  OzFileJournal::open(name);
}

OzFileJournal::OzFileJournal(OzString const& name, int precision)
  : OzFileJournal(name.as_const_c_string(), precision)
{
}

OzFileJournal::OzFileJournal(OzFileJournal const& other)
  : OzJournal(other)
{
  OZ_ASSERT(false);
}

OzFileJournal& OzFileJournal::operator=(OzFileJournal const&)
{
  OZ_ASSERT(false);
  return *this;
}

OzFileJournal::~OzFileJournal()
{
  close_stream();
}

void OzFileJournal::flush()
{
  std::fflush(file_);
}

void OzFileJournal::open(char const* name)
{
  OzString const new_name(name); // `name` may lie in the buffer, or be the old name
  flush_buffer();
  close();
  if (name != nullptr)
  {
    filename_ = new_name;
    file_ = std::fopen(filename_.as_const_c_string(), "w+b");
  }
  OZ_ASSERT(file_ != nullptr);
}

void OzFileJournal::open(OzString const& name)
{
  open(name.as_const_c_string());
}

void OzFileJournal::close()
{
  close_stream();
}

OzString OzFileJournal::filename() const
{
  return filename_;
}

void OzFileJournal::append(OzFileJournal& other)
{
  if (&other == this)
    return;

  append_to_journal(other.buffer_);
  other.flush_buffer();
}

void OzFileJournal::append_to_journal(OzString const& text)
{
  if (file_ != nullptr)
  {
    std::fprintf(file_, "%s", text.as_const_c_string());
    return;
  }

  if (text.null() && buffer_end_stands())
    return;
  if (text.length() == 0 || !buffer_end_stands()) // either may be without a terminator, or of size 0
  {
    bool const terminated = text.length() != 0;
    buffer_.append(text);
    buffer_end = terminated ? std::strlen(buffer_.as_const_c_string()) : UNKNOWN;
    return;
  }

  // What buffer_.append(text) does, without its search for the end of the text.
  std::uint64_t const added = strnlen(text.as_const_c_string(), text.length() + 1);
  std::uint64_t const size = std::max(buffer_.length() + text.length(), buffer_end + added) + 1;
  buffer_.resize(size, true);

  // `text` is looked at again only now: it may be the buffer, which has moved.
  std::memcpy(buffer_.as_c_string() + buffer_end, text.as_const_c_string(), added);
  buffer_end += added;
  buffer_.as_c_string()[buffer_end] = '\0';
}

void OzFileJournal::flush_buffer()
{
  buffer_ = "";
  buffer_end = 0;
}

bool OzFileJournal::buffer_end_stands() const
{
  if (buffer_end > buffer_.length())
    return false;

  char const* const text = buffer_.as_const_c_string();
  return text[buffer_end] == '\0' && (buffer_end == 0 || text[buffer_end - 1] != '\0');
}

void OzFileJournal::close_stream()
{
  if (file_ == nullptr)
    return;

  // The check itself closes: without a handler the stream stays open, unflushed, until the process ends.
  std::FILE* const file = file_;
  file_ = nullptr;
  OZ_ASSERT(std::fclose(file) == 0);
}
