#ifndef OZOBJTABLE_H
#define OZOBJTABLE_H

#include "ozdebug.h"
#include "ozexport.h"
#include "ozstring.h"

#include <cstdint>
#include <vector>

class OzJournal;
class OzObject;

/// A numbered list of objects that a model keeps by number: what a table offers to those who use one.
///
/// An entry keeps its index as long as no entry before it is removed. One entry may be the active one, and
/// the entries from the variable offset on may be marked as the part of the table that varies; both are
/// numbers and nothing more, and the table gives them no meaning. Slots may be empty.
///
/// Ownership: a table works on clones. What goes in is copied, the copy is the table's own, and what comes out
/// is a copy again, which is the caller's.
/// Threads: one at a time.
class OZ_EXPORT OzObjectTable
{
public:
  /// Stands where there is no index: no active entry, no entry of a name.
  static constexpr unsigned int NO_INDEX = 0xFFFFFFFE;

  OzObjectTable() = default;
  OzObjectTable(OzObjectTable const&) = default;
  OzObjectTable& operator=(OzObjectTable const&) = default;
  virtual ~OzObjectTable() = 0;

  /// The number of slots, empty ones included.
  virtual std::uint64_t size() const = 0;

  /// The name of the table.
  virtual OzString& get_name() = 0;
  virtual OzString const& get_name() const = 0;
  virtual bool set_name(OzString const& name) = 0;
  virtual bool set_name(char const* const name) = 0;

  /// The names of the entries.
  virtual bool list_by_name(std::vector<OzString>& names) const = 0;

  /// Where the part of the table begins that varies.
  virtual unsigned int get_variable_table_offset() const = 0;
  virtual bool set_variable_table_offset(unsigned int offset) = 0;

  /// The index of the entry of that name, or NO_INDEX.
  virtual unsigned int get_index_by_name(char const* const name) const = 0;
  virtual unsigned int get_index_by_name(OzString const& name) const = 0;
  virtual bool get_name_by_index(unsigned int index, OzString& name) const = 0;

  /// A copy of an entry, into `object`.
  virtual bool get_entry(unsigned int index, OzObject& object) const = 0;
  /// A copy of an entry, which the caller owns. Null if there is none.
  virtual bool get_entry(unsigned int index, OzObject*& object) const = 0;

  /// NO_INDEX if no entry is the active one.
  virtual unsigned int get_active_entry_index() const = 0;
  virtual bool set_active_entry(unsigned int index) = 0;
  /// No entry is the active one from now on.
  virtual bool reset_active_entry() = 0;

  virtual bool rename_entry(unsigned int index, OzString const& name) = 0;

  virtual bool replace_entry(unsigned int index, OzObject const& object) = 0;
  virtual bool append_entry(OzObject const& object) = 0;
  /// Takes an entry out together with its slot: all later entries get the next lower index.
  virtual bool remove_entry(unsigned int index) = 0;

  virtual bool is_index_valid(unsigned int index) const = 0;

  /// May an entry have that name?
  virtual bool is_name_valid(OzString const& name) = 0;
  virtual bool is_name_valid(char const* const name) = 0;

  virtual void debug(OzJournal& journal, OzDebug level, bool flag, int indent) const = 0;
};

/// A table whose entries have no names.
///
/// Operations that take an index answer false to one at or above size(), and the table is then as it was.
/// Removing an entry changes neither the active index nor the variable offset: they go on naming the same
/// numbers, which now are other entries. Whoever holds indices calls `invalidate_entry`, which empties a slot
/// and moves nothing.
///
/// A derived class whose entries have names overrides the six operations about names of entries.
///
/// Ownership: the table deletes its entries, each when it has left its slot, so that whoever observes the end
/// of an entry finds the table without it. Not copyable.
/// Threads: one at a time.
/// Reports: `get_index_by_name`, `get_name_by_index`, `list_by_name` and `rename_entry`, each time they are
/// called.
/// Failure: without memory std::bad_alloc, and the table is as it was; so it is if the copy of an entry
/// throws.
/// Cost: everything O(1) but `remove_entry` and what looks at all entries; storing and getting cost a clone.
class OZ_EXPORT OzObjTable : public OzObjectTable
{
public:
  /// A table without a name, of objects of any type.
  OzObjTable();
  /// A table of objects of any type.
  explicit OzObjTable(OzString const& name);
  /// A table of objects of the type `type`. Entries are not held against it: it is for derived classes.
  OzObjTable(OzString const& name, OzString const* const& type);
  OzObjTable(OzObjTable const&) = delete;
  OzObjTable& operator=(OzObjTable const&) = delete;
  ~OzObjTable() override;

  std::uint64_t size() const override;
  OzString& get_name() override;
  OzString const& get_name() const override;
  /// True.
  bool set_name(OzString const& name) override;
  /// True. Null keeps the old name.
  bool set_name(char const* const name) override;
  /// Reports. False, and `names` is as it was.
  bool list_by_name(std::vector<OzString>& names) const override;
  unsigned int get_variable_table_offset() const override;
  /// False, with nothing changed, for an offset above size(); size() itself is allowed.
  bool set_variable_table_offset(unsigned int offset) override;
  /// Asks the other overload, of the most derived class.
  unsigned int get_index_by_name(char const* const name) const override;
  /// Reports. NO_INDEX.
  unsigned int get_index_by_name(OzString const& name) const override;
  /// Reports. False, and `name` is as it was.
  bool get_name_by_index(unsigned int index, OzString& name) const override;
  /// False: this table does not copy into objects that are there already.
  bool get_entry(unsigned int index, OzObject& object) const override;
  /// False, and `object` is null, if the slot is empty or does not exist, or if the clone of the entry is no
  /// OzObject.
  bool get_entry(unsigned int index, OzObject*& object) const override;
  unsigned int get_active_entry_index() const override;
  /// The slot may be empty.
  bool set_active_entry(unsigned int index) override;
  /// True.
  bool reset_active_entry() override;
  /// Reports. False.
  bool rename_entry(unsigned int index, OzString const& name) override;
  /// `object` may be the entry that it replaces. Where its clone is no OzObject the slot is left empty.
  bool replace_entry(unsigned int index, OzObject const& object) override;
  /// True. Where the clone of `object` is no OzObject the new slot is empty.
  bool append_entry(OzObject const& object) override;
  bool remove_entry(unsigned int index) override;
  bool is_index_valid(unsigned int index) const override;
  /// False.
  bool is_name_valid(OzString const& name) override;
  bool is_name_valid(char const* const name) override;
  /// From OZ_DEBUG_CONTENTS on name, variable offset and size; at OZ_DEBUG_DETAIL, and only there, the entries
  /// too, each by its own `debug`.
  void debug(OzJournal& journal, OzDebug level, bool flag, int indent) const override;

  /// The number of slots that are not empty.
  virtual std::uint64_t n_valid_entries() const;
  /// Adds empty slots up to `n`. False, with nothing changed, if that would not add any: a table never shrinks
  /// this way.
  virtual bool resize(std::uint64_t n);
  /// The indices of all slots that are not empty, in rising order, in place of what `indices` holds.
  virtual void list_by_valid_indices(std::vector<unsigned int>& indices) const;
  /// Empties a slot. The indices of the other entries stay. True also for a slot that was empty already.
  virtual bool invalidate_entry(unsigned int index);
  virtual bool is_entry_valid(unsigned int index) const;
  /// True.
  virtual bool is_resizable() const;

protected:
  OzString name_;
  std::vector<OzObject*> entries_; // owned; null is an empty slot
  unsigned int active_entry_ = NO_INDEX;
  unsigned int variable_table_offset_ = 0;
  OzString const* entry_type_; // a type id
};

/// A set of tables, numbered as their entries are. The library has no such set: this is what applications
/// agree on that keep one.
class OZ_EXPORT OzTableSet
{
public:
  OzTableSet() = default;
  OzTableSet(OzTableSet const&) = default;
  OzTableSet& operator=(OzTableSet const&) = default;
  virtual ~OzTableSet();

  /// The number of tables.
  virtual std::uint64_t size() const = 0;
  /// Table number `index`, which the set owns; null if there is none.
  virtual OzObjectTable* get_table(unsigned int index) = 0;
  virtual OzObjectTable const* get_table(unsigned int index) const = 0;
  /// Adds an empty table. Its index, or OzObjectTable::NO_INDEX.
  virtual unsigned int append_table(OzString const& name) = 0;
  virtual bool remove_table(unsigned int index) = 0;
  virtual bool rename_table(unsigned int index, OzString const& name) = 0;
  /// The index of the table of that name, or OzObjectTable::NO_INDEX.
  virtual unsigned int get_index_by_name(OzString const& name) const = 0;
  virtual bool get_name_by_index(unsigned int index, OzString& name) const = 0;
  virtual bool list_by_name(std::vector<OzString>& names) const = 0;
  virtual bool is_index_valid(unsigned int index) const = 0;
  virtual bool is_name_valid(OzString const& name) const = 0;

  /// Adds a copy of table `index` under another name. Its index, or OzObjectTable::NO_INDEX, as here.
  virtual unsigned int duplicate_table(unsigned int index, OzString const& name);
  /// Makes table `to` a copy of table `from`. False here.
  virtual bool clone_table(unsigned int from, unsigned int to);
  /// 0 here.
  virtual unsigned int clone_table(unsigned int index);

  /// OzObjectTable::NO_INDEX if no table is the active one.
  virtual unsigned int get_active_table_index() const = 0;
  virtual bool set_active_table(unsigned int index) = 0;
  virtual bool reset_active_table() = 0;
  virtual bool is_resizable() const = 0;

  /// Brings the tables into line with each other, where a set has a notion of that. False here.
  virtual bool synchronize_tables();

  virtual void debug(OzJournal& journal, OzDebug level, bool flag, int indent) const = 0;

  /// False.
  bool invalidate_entry(unsigned int index);
};

#endif
