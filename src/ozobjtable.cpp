#include "ozobjtable.h"

#include "ozassert.h"
#include "ozjournal.h"
#include "ozobject.h"

#include <memory>
#include <new>

namespace
{
/// A clone of `object`, or null if that turns out to be something else than an object of a model.
std::unique_ptr<OzObject> clone_of(OzObject const& object)
{
  OzDynObj* const clone = object.clone();
  std::unique_ptr<OzObject> result(dynamic_cast<OzObject*>(clone));
  if (result == nullptr)
    delete clone;
  return result;
}
} // namespace

OzObjectTable::~OzObjectTable() = default;

OzObjTable::OzObjTable()
  : OzObjTable(OzString())
{
}

OzObjTable::OzObjTable(OzString const& name)
  : OzObjTable(name, OzObject::type_id())
{
}

OzObjTable::OzObjTable(OzString const& name, OzString const* const& type)
  : name_(name)
  , entry_type_(type)
{
}

OzObjTable::~OzObjTable()
{
  for (OzObject*& slot : entries_)
  {
    std::unique_ptr<OzObject> const doomed(slot);
    slot = nullptr;
  }
}

std::uint64_t OzObjTable::size() const
{
  return entries_.size();
}

OzString& OzObjTable::get_name()
{
  return name_;
}

OzString const& OzObjTable::get_name() const
{
  return name_;
}

bool OzObjTable::set_name(OzString const& name)
{
  name_ = name;
  return true;
}

bool OzObjTable::set_name(char const* const name)
{
  name_ = name;
  return true;
}

bool OzObjTable::list_by_name(std::vector<OzString>&) const
{
  OZ_ASSERT(false); // entries have no names
  return false;
}

unsigned int OzObjTable::get_variable_table_offset() const
{
  return variable_table_offset_;
}

bool OzObjTable::set_variable_table_offset(unsigned int offset)
{
  if (offset > entries_.size())
    return false;

  variable_table_offset_ = offset;
  return true;
}

unsigned int OzObjTable::get_index_by_name(char const* const name) const
{
  return get_index_by_name(OzString(name));
}

unsigned int OzObjTable::get_index_by_name(OzString const&) const
{
  OZ_ASSERT(false); // entries have no names
  return NO_INDEX;
}

bool OzObjTable::get_name_by_index(unsigned int, OzString&) const
{
  OZ_ASSERT(false); // entries have no names
  return false;
}

bool OzObjTable::get_entry(unsigned int, OzObject&) const
{
  return false;
}

bool OzObjTable::get_entry(unsigned int index, OzObject*& object) const
{
  object = nullptr;
  if (index >= entries_.size() || entries_[index] == nullptr)
    return false;

  object = clone_of(*entries_[index]).release();
  return object != nullptr;
}

unsigned int OzObjTable::get_active_entry_index() const
{
  return active_entry_;
}

bool OzObjTable::set_active_entry(unsigned int index)
{
  if (index >= entries_.size())
    return false;

  active_entry_ = index;
  return true;
}

bool OzObjTable::reset_active_entry()
{
  active_entry_ = NO_INDEX;
  return true;
}

bool OzObjTable::rename_entry(unsigned int, OzString const&)
{
  OZ_ASSERT(false); // entries have no names
  return false;
}

bool OzObjTable::replace_entry(unsigned int index, OzObject const& object)
{
  if (index >= entries_.size())
    return false;

  // Cloned first, since `object` may be the entry; deleted last, since its end may be observed.
  std::unique_ptr<OzObject> clone = clone_of(object);
  std::unique_ptr<OzObject> const doomed(entries_[index]);
  entries_[index] = clone.release();
  return true;
}

bool OzObjTable::append_entry(OzObject const& object)
{
  std::unique_ptr<OzObject> clone = clone_of(object);
  entries_.push_back(nullptr);
  entries_.back() = clone.release();
  return true;
}

bool OzObjTable::remove_entry(unsigned int index)
{
  if (index >= entries_.size())
    return false;

  std::unique_ptr<OzObject> const doomed(entries_[index]);
  entries_.erase(entries_.begin() + index);
  return true;
}

bool OzObjTable::is_index_valid(unsigned int index) const
{
  return index < entries_.size();
}

bool OzObjTable::is_name_valid(OzString const&)
{
  return false;
}

bool OzObjTable::is_name_valid(char const* const)
{
  return false;
}

void OzObjTable::debug(OzJournal& journal, OzDebug level, bool flag, int indent) const
{
  if (level < OZ_DEBUG_CONTENTS)
    return;

  int const step = Oz_DebugIndentStep();
  Oz_DebugIndentation(journal, indent);
  journal << "OzObjTable" << ozEndExpr;
  Oz_DebugIndentation(journal, indent + step);
  journal << "Table Name       : " << name_ << ozEndExpr;
  Oz_DebugIndentation(journal, indent + step);
  journal << "Variable offset  : " << variable_table_offset_ << ozEndExpr;
  Oz_DebugIndentation(journal, indent + step);
  journal << "Entries          : " << size() << ozEndExpr;
  if (level != OZ_DEBUG_DETAIL)
    return;

  std::uint64_t index = 0;
  for (OzObject const* const entry : entries_)
  {
    Oz_DebugIndentation(journal, indent + 2 * step);
    journal << index << " : " << (entry == nullptr ? "nullptr" : "") << ozEndExpr;
    if (entry != nullptr)
      entry->debug(journal, OZ_DEBUG_DETAIL, flag, indent + 2 * step);
    ++index;
  }
}

std::uint64_t OzObjTable::n_valid_entries() const
{
  std::uint64_t n = 0;
  for (OzObject const* const entry : entries_)
    n += entry != nullptr ? 1 : 0;
  return n;
}

bool OzObjTable::resize(std::uint64_t n)
{
  if (n <= entries_.size())
    return false;

  if (n > entries_.max_size())
    throw std::bad_alloc();
  entries_.resize(n);
  return true;
}

void OzObjTable::list_by_valid_indices(std::vector<unsigned int>& indices) const
{
  indices.clear();
  for (std::uint64_t i = 0; i < entries_.size(); ++i)
    if (entries_[i] != nullptr)
      indices.push_back(static_cast<unsigned int>(i));
}

bool OzObjTable::invalidate_entry(unsigned int index)
{
  if (index >= entries_.size())
    return false;

  std::unique_ptr<OzObject> const doomed(entries_[index]);
  entries_[index] = nullptr;
  return true;
}

bool OzObjTable::is_entry_valid(unsigned int index) const
{
  return index < entries_.size() && entries_[index] != nullptr;
}

bool OzObjTable::is_resizable() const
{
  return true;
}

OzTableSet::~OzTableSet() = default;

unsigned int OzTableSet::duplicate_table(unsigned int, OzString const&)
{
  return OzObjectTable::NO_INDEX;
}

bool OzTableSet::clone_table(unsigned int, unsigned int)
{
  return false;
}

unsigned int OzTableSet::clone_table(unsigned int)
{
  return 0;
}

bool OzTableSet::synchronize_tables()
{
  return false;
}

bool OzTableSet::invalidate_entry(unsigned int)
{
  return false;
}
