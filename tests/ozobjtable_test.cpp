#include "ozobjtable.h"

#include "model_doubles.h"
#include "ozjournal.h"
#include "ozobject.h"
#include "ozstandardattribs.h"
#include "report_recorder.h"
#include "text_journal.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace
{
constexpr unsigned int NO_INDEX = 4294967294u;

/// An object with a number, which counts its kind.
class Part : public OzObject
{
public:
  explicit Part(int n)
    : number(n)
  {
    ++alive;
  }
  Part(Part const& other)
    : OzObject(other)
    , number(other.number)
  {
    ++alive;
    ++copies;
  }
  Part& operator=(Part const&) = delete;
  ~Part() override
  {
    --alive;
    deleted.push_back(number);
  }

  OzDynObj* clone() const override { return new Part(*this); }
  void debug(OzJournal& journal, OzDebug level, bool flag, int indent) const override
  {
    Oz_DebugIndentation(journal, indent);
    journal << "Part " << number << ", level " << static_cast<int>(level) << (flag ? ", flag" : "")
            << ozEndExpr;
  }

  static void reset()
  {
    alive = copies = 0;
    deleted.clear();
  }

  int number;
  static inline int alive = 0;
  static inline int copies = 0;
  static inline std::vector<int> deleted; // numbers, oldest first
};

/// An object whose clone is something else.
class Changeling : public TestObject
{
public:
  explicit Changeling(Log& l)
    : log(&l)
  {
  }
  OzDynObj* clone() const override { return new TestAttrib("clone", *log); }

private:
  Log* log;
};

class Unclonable : public TestObject
{
public:
  OzDynObj* clone() const override { throw std::runtime_error("no clone"); }
};

/// Opens what a table keeps for derived classes.
class Probe : public OzObjTable
{
public:
  using OzObjTable::active_entry_;
  using OzObjTable::entries_;
  using OzObjTable::entry_type_;
  using OzObjTable::name_;
  using OzObjTable::OzObjTable;
  using OzObjTable::variable_table_offset_;
};

typedef std::vector<int> Ints;
typedef std::vector<unsigned int> Indices;
constexpr int EMPTY = -1; // how an empty slot is written

int number_of(OzObject const* object)
{
  return object != nullptr ? static_cast<Part const*>(object)->number : EMPTY;
}

Ints numbers(std::vector<OzObject*> const& slots)
{
  Ints result;
  for (OzObject const* const slot : slots)
    result.push_back(number_of(slot));
  return result;
}

Ints numbers(Probe const& table)
{
  return numbers(table.entries_);
}

Indices valid_indices(OzObjTable const& table)
{
  Indices result{99};
  table.list_by_valid_indices(result);
  return result;
}

/// A copy of entry `i`, or null.
std::unique_ptr<OzObject> entry(OzObjectTable const& table, unsigned int i)
{
  OzObject* object = nullptr;
  table.get_entry(i, object);
  return std::unique_ptr<OzObject>(object);
}

void append(OzObjectTable& table, Ints const& wanted)
{
  for (int const number : wanted)
    EXPECT_TRUE(table.append_entry(Part(number)));
}

/// Holds that each part that was made was deleted.
class OzObjTableTest : public testing::Test
{
protected:
  OzObjTableTest() { Part::reset(); }
  ~OzObjTableTest() override { EXPECT_EQ(Part::alive, 0); }
};

} // namespace

TEST(OzObjectTable, ItsVirtualFunctionsStandInTheirOrder)
{
  typedef OzObjectTable T;
  EXPECT_EQ(vtable_slot(&T::size), 2);
  EXPECT_EQ(vtable_slot(static_cast<OzString& (T::*)()>(&T::get_name)), 3);
  EXPECT_EQ(vtable_slot(static_cast<OzString const& (T::*)() const>(&T::get_name)), 4);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(OzString const&)>(&T::set_name)), 5);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(char const*)>(&T::set_name)), 6);
  EXPECT_EQ(vtable_slot(&T::list_by_name), 7);
  EXPECT_EQ(vtable_slot(&T::get_variable_table_offset), 8);
  EXPECT_EQ(vtable_slot(&T::set_variable_table_offset), 9);
  EXPECT_EQ(vtable_slot(static_cast<unsigned (T::*)(char const*) const>(&T::get_index_by_name)), 10);
  EXPECT_EQ(vtable_slot(static_cast<unsigned (T::*)(OzString const&) const>(&T::get_index_by_name)), 11);
  EXPECT_EQ(vtable_slot(&T::get_name_by_index), 12);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(unsigned, OzObject&) const>(&T::get_entry)), 13);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(unsigned, OzObject*&) const>(&T::get_entry)), 14);
  EXPECT_EQ(vtable_slot(&T::get_active_entry_index), 15);
  EXPECT_EQ(vtable_slot(&T::set_active_entry), 16);
  EXPECT_EQ(vtable_slot(&T::reset_active_entry), 17);
  EXPECT_EQ(vtable_slot(&T::rename_entry), 18);
  EXPECT_EQ(vtable_slot(&T::replace_entry), 19);
  EXPECT_EQ(vtable_slot(&T::append_entry), 20);
  EXPECT_EQ(vtable_slot(&T::remove_entry), 21);
  EXPECT_EQ(vtable_slot(&T::is_index_valid), 22);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(OzString const&)>(&T::is_name_valid)), 23);
  EXPECT_EQ(vtable_slot(static_cast<bool (T::*)(char const*)>(&T::is_name_valid)), 24);
  EXPECT_EQ(vtable_slot(&T::debug), 25);
  EXPECT_TRUE(std::is_abstract_v<OzObjectTable>);
  EXPECT_EQ(sizeof(OzObjectTable), sizeof(void*));
}

TEST(OzObjectTable, NoIndexIsTheLastNumberButOne)
{
  EXPECT_EQ(OzObjectTable::NO_INDEX, 4294967294u);
}

TEST(OzObjTable, ItsVirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzObjTable::n_valid_entries), 26);
  EXPECT_EQ(vtable_slot(&OzObjTable::resize), 27);
  EXPECT_EQ(vtable_slot(&OzObjTable::list_by_valid_indices), 28);
  EXPECT_EQ(vtable_slot(&OzObjTable::invalidate_entry), 29);
  EXPECT_EQ(vtable_slot(&OzObjTable::is_entry_valid), 30);
  EXPECT_EQ(vtable_slot(&OzObjTable::is_resizable), 31);
}

TEST(OzObjTable, ItsFieldsStandInTheirOrder)
{
  Probe const table;
  void const* const fields[] = {&table,
                                &table.name_,
                                &table.entries_,
                                &table.active_entry_,
                                &table.variable_table_offset_,
                                &table.entry_type_};

  for (std::size_t i = 1; i < std::size(fields); ++i)
    EXPECT_LT(fields[i - 1], fields[i]) << i;
  EXPECT_EQ(sizeof(OzObjTable), sizeof(void*) + sizeof(OzString) + sizeof(std::vector<OzObject*>) +
                                    2 * sizeof(unsigned int) + sizeof(void*));
}

TEST(OzObjTable, IsNotCopyable)
{
  EXPECT_FALSE(std::is_copy_constructible_v<OzObjTable>);
  EXPECT_FALSE(std::is_copy_assignable_v<OzObjTable>);
  EXPECT_FALSE((std::is_convertible_v<OzString, OzObjTable>));
}

TEST_F(OzObjTableTest, BeginsEmptyWithoutNameAndActiveEntry)
{
  Probe const table;

  EXPECT_EQ(table.size(), 0u);
  EXPECT_EQ(table.n_valid_entries(), 0u);
  EXPECT_EQ(table.get_active_entry_index(), NO_INDEX);
  EXPECT_EQ(table.get_variable_table_offset(), 0u);
  EXPECT_TRUE(table.get_name() == "");
  EXPECT_EQ(table.entry_type_, OzObject::type_id());
  EXPECT_TRUE(table.is_resizable());
}

TEST_F(OzObjTableTest, TakesItsNameAndTheTypeOfItsEntries)
{
  OzString const name("parts");
  Probe const named(name);
  Probe const typed(name, OzNameAttrib::type_id());

  EXPECT_TRUE(named.get_name() == "parts");
  EXPECT_EQ(named.entry_type_, OzObject::type_id());
  EXPECT_TRUE(typed.get_name() == "parts");
  EXPECT_EQ(typed.entry_type_, OzNameAttrib::type_id());
}

TEST_F(OzObjTableTest, DoesNotHoldItsEntriesAgainstTheirType)
{
  Probe table("parts", OzNameAttrib::type_id());

  append(table, {1});

  EXPECT_EQ(numbers(table), (Ints{1}));
}

TEST_F(OzObjTableTest, ItsNameCanBeSet)
{
  Probe table("old");

  EXPECT_TRUE(table.set_name(OzString("new")));
  EXPECT_TRUE(table.get_name() == "new");
  EXPECT_TRUE(table.set_name("newer"));
  EXPECT_TRUE(table.get_name() == "newer");
  table.get_name().append(OzString("!"));
  EXPECT_TRUE(static_cast<OzObjectTable const&>(table).get_name() == "newer!");
}

TEST_F(OzObjTableTest, ANullNameKeepsTheOldOne)
{
  Probe table("old");
  char const* const none = nullptr;

  EXPECT_TRUE(table.set_name(none));

  EXPECT_TRUE(table.get_name() == "old");
}

TEST_F(OzObjTableTest, AppendStoresAClone)
{
  Probe table;
  Part part(1);

  EXPECT_TRUE(table.append_entry(part));
  part.number = 2;

  ASSERT_EQ(table.size(), 1u);
  EXPECT_NE(table.entries_[0], &part);
  EXPECT_NE(table.entries_[0]->identity(), part.identity());
  EXPECT_EQ(numbers(table), (Ints{1}));
  EXPECT_EQ(Part::copies, 1);
}

TEST_F(OzObjTableTest, EachGetIsAnotherClone)
{
  Probe table;
  append(table, {7});

  std::unique_ptr<OzObject> const a = entry(table, 0);
  std::unique_ptr<OzObject> const b = entry(table, 0);

  ASSERT_TRUE(a != nullptr && b != nullptr);
  EXPECT_NE(a, b);
  EXPECT_NE(a.get(), table.entries_[0]);
  EXPECT_NE(a->identity(), b->identity());
  EXPECT_NE(a->identity(), table.entries_[0]->identity());
  EXPECT_EQ(number_of(a.get()), 7);
  EXPECT_EQ(number_of(b.get()), 7);
  EXPECT_EQ(Part::copies, 3);
}

TEST_F(OzObjTableTest, GetTellsWhetherThereIsAnEntry)
{
  Probe table;
  append(table, {7});
  table.resize(2);
  Part other(8);
  OzObject* object = &other;

  EXPECT_TRUE(table.get_entry(0, object));
  delete object;
  object = &other;
  EXPECT_FALSE(table.get_entry(1, object));
  EXPECT_EQ(object, nullptr);
  object = &other;
  EXPECT_FALSE(table.get_entry(2, object));
  EXPECT_EQ(object, nullptr);
  object = &other;
  EXPECT_FALSE(table.get_entry(NO_INDEX, object));
  EXPECT_EQ(object, nullptr);
}

TEST_F(OzObjTableTest, DoesNotCopyIntoAnObjectThatIsThere)
{
  Probe table;
  append(table, {7});
  Part part(1);
  OzObject& object = part;

  EXPECT_FALSE(table.get_entry(0, object));
  EXPECT_FALSE(table.get_entry(1, object));
  EXPECT_EQ(part.number, 1);
}

TEST_F(OzObjTableTest, ReplaceDeletesTheOldEntryOnce)
{
  Probe table;
  append(table, {1, 2, 3});
  Part const part(9);
  Part::deleted.clear();

  EXPECT_TRUE(table.replace_entry(1, part));

  EXPECT_EQ(numbers(table), (Ints{1, 9, 3}));
  EXPECT_EQ(Part::deleted, (Ints{2}));
  EXPECT_NE(table.entries_[1], &part);
}

TEST_F(OzObjTableTest, ReplaceFillsAnEmptySlot)
{
  Probe table;
  table.resize(2);

  EXPECT_TRUE(table.replace_entry(1, Part(9)));

  EXPECT_EQ(numbers(table), (Ints{EMPTY, 9}));
}

TEST_F(OzObjTableTest, AnEntryMayReplaceItself)
{
  Probe table;
  append(table, {1});
  OzObject const* const old = table.entries_[0];
  int const identity = old->identity();

  EXPECT_TRUE(table.replace_entry(0, *old));

  EXPECT_EQ(numbers(table), (Ints{1}));
  EXPECT_NE(table.entries_[0]->identity(), identity);
}

TEST_F(OzObjTableTest, InvalidateEmptiesASlotAndMovesNothing)
{
  Probe table;
  append(table, {1, 2, 3});
  Part::deleted.clear();

  EXPECT_TRUE(table.invalidate_entry(1));

  EXPECT_EQ(Part::deleted, (Ints{2}));
  EXPECT_EQ(table.size(), 3u);
  EXPECT_EQ(table.n_valid_entries(), 2u);
  EXPECT_TRUE(table.is_entry_valid(0));
  EXPECT_FALSE(table.is_entry_valid(1));
  EXPECT_TRUE(table.is_index_valid(1));
  EXPECT_EQ(valid_indices(table), (Indices{0, 2}));
  EXPECT_EQ(entry(table, 1), nullptr);
  EXPECT_TRUE(table.invalidate_entry(1));
  EXPECT_EQ(Part::deleted, (Ints{2}));
}

TEST_F(OzObjTableTest, RemoveMovesLaterEntriesDown)
{
  Probe table;
  append(table, {1, 2, 3});
  Part::deleted.clear();

  EXPECT_TRUE(table.remove_entry(1));

  EXPECT_EQ(Part::deleted, (Ints{2}));
  EXPECT_EQ(table.size(), 2u);
  EXPECT_EQ(numbers(table), (Ints{1, 3}));
  EXPECT_EQ(number_of(entry(table, 1).get()), 3);
}

TEST_F(OzObjTableTest, RemoveTakesAnEmptySlotOut)
{
  Probe table;
  append(table, {1, 2});
  table.invalidate_entry(0);

  EXPECT_TRUE(table.remove_entry(0));

  EXPECT_EQ(numbers(table), (Ints{2}));
}

TEST_F(OzObjTableTest, RemoveLeavesActiveEntryAndVariableOffset)
{
  Probe table;
  append(table, {1, 2, 3});
  table.set_active_entry(2);
  table.set_variable_table_offset(3);

  table.remove_entry(0);

  EXPECT_EQ(table.get_active_entry_index(), 2u);
  EXPECT_EQ(table.get_variable_table_offset(), 3u);
  EXPECT_FALSE(table.is_index_valid(table.get_active_entry_index()));
  table.remove_entry(0);
  table.remove_entry(0);
  EXPECT_EQ(table.get_active_entry_index(), 2u);
  EXPECT_EQ(table.get_variable_table_offset(), 3u);
  EXPECT_FALSE(table.set_variable_table_offset(3));
}

TEST_F(OzObjTableTest, InvalidateLeavesActiveEntryAndVariableOffset)
{
  Probe table;
  append(table, {1, 2, 3});
  table.set_active_entry(1);
  table.set_variable_table_offset(2);

  table.invalidate_entry(1);

  EXPECT_EQ(table.get_active_entry_index(), 1u);
  EXPECT_EQ(table.get_variable_table_offset(), 2u);
}

TEST_F(OzObjTableTest, ABadIndexIsRefusedAndChangesNothing)
{
  for (unsigned int const bad : {3u, 4u, NO_INDEX, 4294967295u})
  {
    Probe table;
    append(table, {1, 2, 3});
    table.set_active_entry(1);
    ReportRecorder const recorder;
    Part::copies = 0;

    EXPECT_FALSE(table.replace_entry(bad, Part(9)));
    EXPECT_FALSE(table.invalidate_entry(bad));
    EXPECT_FALSE(table.remove_entry(bad));
    EXPECT_FALSE(table.set_active_entry(bad));
    EXPECT_FALSE(table.is_index_valid(bad));
    EXPECT_FALSE(table.is_entry_valid(bad));

    EXPECT_EQ(numbers(table), (Ints{1, 2, 3})) << bad;
    EXPECT_EQ(table.get_active_entry_index(), 1u);
    EXPECT_EQ(Part::copies, 0);
    EXPECT_EQ(recorder.units(), reports(0, ""));
  }
}

TEST_F(OzObjTableTest, ResizeOnlyGrows)
{
  Probe table;
  append(table, {1, 2, 3});

  EXPECT_FALSE(table.resize(3));
  EXPECT_FALSE(table.resize(2));
  EXPECT_FALSE(table.resize(0));
  EXPECT_EQ(numbers(table), (Ints{1, 2, 3}));
  EXPECT_TRUE(table.resize(5));
  EXPECT_EQ(numbers(table), (Ints{1, 2, 3, EMPTY, EMPTY}));
  EXPECT_EQ(table.n_valid_entries(), 3u);
}

TEST_F(OzObjTableTest, AnImpossibleSizeIsBadAllocAndChangesNothing)
{
  Probe table;
  append(table, {1});

  EXPECT_THROW(table.resize(std::numeric_limits<std::uint64_t>::max()), std::bad_alloc);

  EXPECT_EQ(numbers(table), (Ints{1}));
}

TEST_F(OzObjTableTest, AppendGoesBehindEmptySlots)
{
  Probe table;
  table.resize(1);

  append(table, {4});

  EXPECT_EQ(numbers(table), (Ints{EMPTY, 4}));
}

TEST_F(OzObjTableTest, AnySlotCanBeTheActiveEntry)
{
  Probe table;
  append(table, {1, 2});
  table.invalidate_entry(0);

  EXPECT_TRUE(table.set_active_entry(1));
  EXPECT_EQ(table.get_active_entry_index(), 1u);
  EXPECT_TRUE(table.set_active_entry(0));
  EXPECT_EQ(table.get_active_entry_index(), 0u);
  EXPECT_TRUE(table.reset_active_entry());
  EXPECT_EQ(table.get_active_entry_index(), NO_INDEX);
}

TEST_F(OzObjTableTest, TheVariableOffsetGoesUpToTheSize)
{
  Probe table;
  append(table, {1, 2});

  EXPECT_TRUE(table.set_variable_table_offset(2));
  EXPECT_FALSE(table.set_variable_table_offset(3));
  EXPECT_EQ(table.get_variable_table_offset(), 2u);
  EXPECT_TRUE(table.set_variable_table_offset(0));
  EXPECT_EQ(table.get_variable_table_offset(), 0u);
}

TEST_F(OzObjTableTest, NamesOfEntriesAreReported)
{
  Probe table;
  append(table, {1});
  ReportRecorder recorder;
  OzString name("name");
  std::vector<OzString> names{"a"};

  EXPECT_EQ(table.get_index_by_name(OzString("x")), NO_INDEX);
  EXPECT_EQ(recorder.units(), reports(1, "ozobjtable.cpp"));
  EXPECT_EQ(table.get_index_by_name("x"), NO_INDEX);
  EXPECT_EQ(recorder.units(), reports(2, "ozobjtable.cpp"));
  EXPECT_FALSE(table.get_name_by_index(0, name));
  EXPECT_EQ(recorder.units(), reports(3, "ozobjtable.cpp"));
  EXPECT_TRUE(name == "name");
  EXPECT_FALSE(table.list_by_name(names));
  EXPECT_EQ(recorder.units(), reports(4, "ozobjtable.cpp"));
  EXPECT_EQ(names.size(), 1u);
  EXPECT_FALSE(table.rename_entry(0, "x"));
  EXPECT_EQ(recorder.units(), reports(5, "ozobjtable.cpp"));
}

TEST_F(OzObjTableTest, NamesOfEntriesFailWithoutAHandlerToo)
{
  Probe table;
  OzString name;
  std::vector<OzString> names;

  EXPECT_EQ(table.get_index_by_name("x"), NO_INDEX);
  EXPECT_FALSE(table.get_name_by_index(0, name));
  EXPECT_FALSE(table.list_by_name(names));
  EXPECT_FALSE(table.rename_entry(0, "x"));
}

TEST_F(OzObjTableTest, AHandlerMayChangeTheTable)
{
  static Probe* reporting;
  Probe table;
  reporting = &table;
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { append(*reporting, {5}); };

  EXPECT_FALSE(table.rename_entry(0, "x"));
  EXPECT_EQ(table.get_index_by_name("x"), NO_INDEX);

  dkb_assertion_handler = former;
  EXPECT_EQ(numbers(table), (Ints{5, 5}));
}

TEST_F(OzObjTableTest, AHandlerMayThrowAndNothingChanges)
{
  Probe table;
  append(table, {1});
  OzString name("name");
  std::vector<OzString> names{"a"};
  OzAssertionHandler const former = dkb_assertion_handler;
  dkb_assertion_handler = [](char const*, int) { throw 7; };

  EXPECT_THROW(table.get_index_by_name("x"), int);
  EXPECT_THROW(table.get_name_by_index(0, name), int);
  EXPECT_THROW(table.list_by_name(names), int);
  EXPECT_THROW(table.rename_entry(0, "x"), int);

  dkb_assertion_handler = former;
  EXPECT_TRUE(name == "name");
  EXPECT_EQ(names.size(), 1u);
  EXPECT_EQ(numbers(table), (Ints{1}));
}

TEST_F(OzObjTableTest, NoNameIsValidAndAskingIsNoMisuse)
{
  Probe table;
  ReportRecorder const recorder;

  EXPECT_FALSE(table.is_name_valid("x"));
  EXPECT_FALSE(table.is_name_valid(OzString("x")));

  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzObjTableTest, AnIndexByTextIsAskedOfTheDerivedClass)
{
  class Named : public OzObjTable
  {
  public:
    using OzObjTable::get_index_by_name;
    unsigned int get_index_by_name(OzString const& name) const override { return name == "second" ? 1 : 77; }
  };
  Named const table;
  ReportRecorder const recorder;

  EXPECT_EQ(table.get_index_by_name("second"), 1u);
  EXPECT_EQ(table.get_index_by_name(static_cast<char const*>(nullptr)), 77u);
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST_F(OzObjTableTest, DeletesEachEntryOnceAtItsEnd)
{
  Probe* const table = new Probe;
  std::unique_ptr<OzObjectTable> owner(table);
  append(*table, {1, 2, 3});
  table->invalidate_entry(1);
  Part::deleted.clear();

  owner.reset();

  EXPECT_EQ(Part::deleted, (Ints{1, 3}));
}

TEST_F(OzObjTableTest, ACloneThatIsNoObjectIsDeletedAndItsSlotEmpty)
{
  Log log;
  Changeling const changeling(log);
  Probe table;
  append(table, {1});

  EXPECT_TRUE(table.append_entry(changeling));
  EXPECT_EQ(log, (Log{"~clone"}));
  EXPECT_TRUE(table.replace_entry(0, changeling));
  EXPECT_EQ(log, (Log{"~clone", "~clone"}));

  EXPECT_EQ(numbers(table), (Ints{EMPTY, EMPTY}));
}

TEST_F(OzObjTableTest, GetOfAnEntryWhoseCloneIsNoObjectGivesNull)
{
  Log log;
  Probe table;
  table.entries_.push_back(new Changeling(log));
  Part part(1);
  OzObject* object = &part;

  EXPECT_FALSE(table.get_entry(0, object));

  EXPECT_EQ(object, nullptr);
  EXPECT_EQ(log, (Log{"~clone"}));
}

TEST_F(OzObjTableTest, ACloneThatThrowsLeavesTheTableAsItWas)
{
  Probe table;
  append(table, {1});
  Part::deleted.clear();

  EXPECT_THROW(table.append_entry(Unclonable()), std::runtime_error);
  EXPECT_THROW(table.replace_entry(0, Unclonable()), std::runtime_error);

  EXPECT_EQ(numbers(table), (Ints{1}));
  EXPECT_EQ(Part::deleted, Ints());
}

TEST_F(OzObjTableTest, WhoObservesTheEndOfAnEntryFindsTheTableWithoutIt)
{
  Log log;
  std::vector<Ints> seen;
  {
    Probe table;
    append(table, {1, 2, 3, 4});
    std::vector<OzObject*> const& slots = table.entries_;
    for (OzObject* const object : slots)
    {
      TestReactor* const reactor = new TestReactor("reactor", log);
      reactor->on_event = [&](OzEvent const&) { seen.push_back(numbers(slots)); };
      object->add_reactor(reactor);
    }

    table.invalidate_entry(1);
    table.replace_entry(2, Part(9));
    table.remove_entry(3);
    EXPECT_EQ(seen, (std::vector<Ints>{{1, EMPTY, 3, 4}, {1, EMPTY, 9, 4}, {1, EMPTY, 9}}));
    seen.clear();
  }
  EXPECT_EQ(seen, (std::vector<Ints>{{EMPTY, EMPTY, 9}}));
}

TEST_F(OzObjTableTest, DebugPrintsNothingBelowTheContents)
{
  Probe table("parts");
  append(table, {1});
  TextJournal journal;

  table.debug(journal, OZ_DEBUG_OFF, false, 0);
  table.debug(journal, OZ_DEBUG_SUMMARY, true, 0);

  EXPECT_EQ(journal.text(), "");
}

TEST_F(OzObjTableTest, DebugPrintsFourLinesOfContents)
{
  Probe table("parts");
  append(table, {1, 2});
  table.set_variable_table_offset(1);
  TextJournal journal;

  table.debug(journal, OZ_DEBUG_CONTENTS, false, 2);

  EXPECT_EQ(journal.text(), "  OzObjTable\n"
                            "     Table Name       : parts\n"
                            "     Variable offset  : 1\n"
                            "     Entries          : 2\n");
}

TEST_F(OzObjTableTest, DebugInDetailPrintsTheEntries)
{
  Probe table("parts");
  append(table, {11, 12, 13});
  table.invalidate_entry(1);
  TextJournal journal;

  table.debug(journal, OZ_DEBUG_DETAIL, true, 1);

  EXPECT_EQ(journal.text(), " OzObjTable\n"
                            "    Table Name       : parts\n"
                            "    Variable offset  : 0\n"
                            "    Entries          : 3\n"
                            "       0 : \n"
                            "       Part 11, level 3, flag\n"
                            "       1 : nullptr\n"
                            "       2 : \n"
                            "       Part 13, level 3, flag\n");
}

TEST_F(OzObjTableTest, DebugPassesTheFlagOnAsItIs)
{
  Probe table;
  append(table, {5});
  TextJournal journal;

  table.debug(journal, OZ_DEBUG_DETAIL, false, 0);

  EXPECT_EQ(journal.text(), "OzObjTable\n"
                            "   Table Name       : \n"
                            "   Variable offset  : 0\n"
                            "   Entries          : 1\n"
                            "      0 : \n"
                            "      Part 5, level 3\n");
}

TEST_F(OzObjTableTest, AgreesWithAVectorOfNumbers)
{
  std::mt19937 random(1903);
  auto const below = [&random](std::size_t n)
  { return std::uniform_int_distribution<unsigned int>(0, static_cast<unsigned int>(n) - 1)(random); };
  Probe table;
  Ints model;
  unsigned int active = NO_INDEX;
  for (int step = 0; step < 20000; ++step)
  {
    SCOPED_TRACE(testing::Message() << "seed 1903 step " << step);
    unsigned int const i = below(model.size() + 2);
    bool const valid = i < model.size();
    switch (below(8))
    {
    case 0:
    case 1:
      ASSERT_TRUE(table.append_entry(Part(step)));
      model.push_back(step);
      break;
    case 2:
      ASSERT_EQ(table.replace_entry(i, Part(step)), valid);
      if (valid)
        model[i] = step;
      break;
    case 3:
      ASSERT_EQ(table.invalidate_entry(i), valid);
      if (valid)
        model[i] = EMPTY;
      break;
    case 4:
    case 5:
      ASSERT_EQ(table.remove_entry(i), valid);
      if (valid)
        model.erase(model.begin() + i);
      break;
    case 6:
      ASSERT_EQ(table.resize(i), i > model.size());
      if (i > model.size())
        model.resize(i, EMPTY);
      break;
    default:
      ASSERT_EQ(table.set_active_entry(i), valid);
      active = valid ? i : active;
    }
    Indices filled;
    for (unsigned int k = 0; k < model.size(); ++k)
      if (model[k] != EMPTY)
        filled.push_back(k);
    ASSERT_EQ(numbers(table), model);
    ASSERT_EQ(table.size(), model.size());
    ASSERT_EQ(table.n_valid_entries(), filled.size());
    ASSERT_EQ(valid_indices(table), filled);
    ASSERT_EQ(table.get_active_entry_index(), active);
    ASSERT_EQ(number_of(entry(table, i).get()), i < model.size() ? model[i] : EMPTY);
    ASSERT_EQ(Part::alive, static_cast<int>(filled.size()));
  }
}

namespace
{
class EmptySet : public OzTableSet
{
public:
  std::uint64_t size() const override { return 0; }
  OzObjectTable* get_table(unsigned int) override { return nullptr; }
  OzObjectTable const* get_table(unsigned int) const override { return nullptr; }
  unsigned int append_table(OzString const&) override { return 0; }
  bool remove_table(unsigned int) override { return true; }
  bool rename_table(unsigned int, OzString const&) override { return true; }
  unsigned int get_index_by_name(OzString const&) const override { return 0; }
  bool get_name_by_index(unsigned int, OzString&) const override { return true; }
  bool list_by_name(std::vector<OzString>&) const override { return true; }
  bool is_index_valid(unsigned int) const override { return true; }
  bool is_name_valid(OzString const&) const override { return true; }
  unsigned int get_active_table_index() const override { return 0; }
  bool set_active_table(unsigned int) override { return true; }
  bool reset_active_table() override { return true; }
  bool is_resizable() const override { return true; }
  void debug(OzJournal&, OzDebug, bool, int) const override {}
};
} // namespace

TEST(OzTableSet, ItsOperationsWithBodiesStandInTheirPlaces)
{
  typedef OzTableSet S;
  EXPECT_EQ(vtable_slot(&S::size), 2);
  EXPECT_EQ(vtable_slot(&S::is_name_valid), 12);
  EXPECT_EQ(vtable_slot(&S::duplicate_table), 13);
  EXPECT_EQ(vtable_slot(static_cast<bool (S::*)(unsigned, unsigned)>(&S::clone_table)), 14);
  EXPECT_EQ(vtable_slot(static_cast<unsigned (S::*)(unsigned)>(&S::clone_table)), 15);
  EXPECT_EQ(vtable_slot(&S::get_active_table_index), 16);
  EXPECT_EQ(vtable_slot(&S::is_resizable), 19);
  EXPECT_EQ(vtable_slot(&S::synchronize_tables), 20);
  EXPECT_EQ(vtable_slot(&S::debug), 21);
  EXPECT_EQ(sizeof(OzTableSet), sizeof(void*));
  EXPECT_TRUE(std::is_abstract_v<OzTableSet>);
}

TEST(OzTableSet, ItsBodiesDoNothing)
{
  EmptySet set;

  EXPECT_EQ(set.duplicate_table(0, "copy"), NO_INDEX);
  EXPECT_FALSE(set.clone_table(0, 1));
  EXPECT_EQ(set.clone_table(0), 0u);
  EXPECT_FALSE(set.synchronize_tables());
  EXPECT_FALSE(set.invalidate_entry(0));
}
