#ifndef OZFILEJOURNAL_H
#define OZFILEJOURNAL_H

#include "ozexport.h"
#include "ozjournal.h"
#include "ozstring.h"

#include <cstdint>
#include <cstdio>

/// A journal that writes to a file, or collects its text in memory while no file is open.
///
/// One that was default-constructed serves as a collector, whose text another file journal then takes over
/// by `append`.
///
/// Ownership: the stream belongs to the journal, but see close().
/// Reports: a file that cannot be opened (the journal then goes on in memory), a stream that cannot be
/// closed, and each copying of a file journal, which is not meant to happen. Write errors are not looked at.
class OZ_EXPORT OzFileJournal : public OzJournal
{
public:
  /// Collects in memory. Width 16, precision 10.
  OzFileJournal();
  /// Writes to a file. The width stays 0.
  OzFileJournal(char const* name, int precision);
  OzFileJournal(OzString const& name, int precision);
  ~OzFileJournal() override;

  /// Also without a file: then it flushes every open output stream of the process, as fflush(nullptr) does.
  void flush() override;

  /// Writes to a new file from now on; one that exists is emptied. Text collected in memory is dropped, and
  /// the file that was open is closed. A null `name` opens nothing, is reported, and keeps the old name.
  virtual void open(char const* name);
  virtual void open(OzString const& name);

  /// Collects in memory from now on. The stream is closed, and with that flushed, only while an assertion
  /// handler is installed; without one it stays open until the process ends. The destructor does the same.
  virtual void close();

  /// The name that `open` was given last, also if that file could not be opened.
  virtual OzString filename() const;

  /// Moves the text that `other` has collected to this journal. Does nothing if `other` is this journal.
  void append(OzFileJournal& other);

  std::FILE* file_handle() { return file_; }

protected:
  OzFileJournal(OzFileJournal const& other);
  /// Reports, and changes nothing.
  OzFileJournal& operator=(OzFileJournal const& other);

  void append_to_journal(OzString const& text) override;

  /// The text collected in memory. Whoever changes it through this reference asks for it anew after each
  /// output, because the journal notes where its text ends.
  OzString& buffer()
  {
    buffer_end = UNKNOWN;
    return buffer_;
  }

  /// Empties the buffer. Nothing is written anywhere.
  void flush_buffer();

private:
  static constexpr std::uint64_t UNKNOWN = ~std::uint64_t(0);

  void close_stream();
  bool buffer_end_stands() const; // false where the buffer was plainly changed since

  OzString filename_;
  std::FILE* file_ = nullptr;
  OzString buffer_;
  std::uint64_t buffer_end = 0; // where the text in buffer_ ends, so that appending does not search for it
};

#endif
