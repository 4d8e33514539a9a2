// Names all that the library offers: what is missing from it, or not exported, does not link.

#include "oz.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

// Every member of every template, for the types that the library itself uses it with.

template class OzArray<int>;
template class OzArray<char>;
template class OzArray<OzString>;
template class OzMatrix<double>;
template class OzIterator<int>;
template class OzArrayIterator<int>;
template class OzArrayIterator<OzDynObj const*>;
template class OzRCPtr<OzAttrib>;
template class OzRCPtr<OzReactor>;
template class OzAutoPtr<OzIterator<OzDynObj const*>>;
template class OzItem<int>;
template class OzList<int>;
template class OzList<void*>;
template class OzQueue<int>;
template class OzStack<void*>;
template class OzCompare<int>;
template class OzStdCompare<int>;
template class OzStdCompare<OzRCPtr<OzAttrib>>;
template class OzDequeBase<OzTask*>;
template class OzDeque<OzTask*>;
template class OzDeque<OzTaskServiceRequest*>;
template class OzMapNode<int, short>;
template class OzMap<int, short>;
template class OzMap<OzString const*, OzMap<int, short>>;
template class OzMap<LumThreads*, OzTaskProcessor*>;
template class OzMapIterator<int, short>;
template class OzMapIterator<OzString const*, OzMap<int, short>>;
template class OzMapKeyIterator<int, short>;
template class OzMapKeyIterator<OzString const*, OzMap<int, short>>;
template class OzPriQueueNode<int, int>;
template class OzPriQueue<int, int>;
template class OzHashMapFunctor<int>;
template class OzHashMapFunctor<double>;
template class OzHashMapFunctor<OzString>;
template class OzHashMapFunctor<std::int64_t>;
template class OzAddressSet<int*>;
template class OzAddressMap<int*, char*>;
template class OzTaskProcessorDkbLocal<int>;
template class OzTaskProcessorDkbLocal<OzArray<int>>;
template class OzTaskProcessorDkbLocal<OzArray<OzString>>;
template class OzTaskProcessorDkbLocal<OzArray<OzArray<long>>>;

namespace
{
/// Lets the linker look for what `thing` points to, or the pointer to member `thing` stands for. Always true:
/// what counts is that the program came about.
template <class Thing>
bool is_there(Thing thing)
{
  Thing volatile asked_for = thing;
  Thing const read = asked_for;
  return read != nullptr;
}

std::string readable(std::type_info const& type)
{
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> const text(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return text != nullptr ? text.get() : type.name();
}

struct TypeInformation
{
  std::type_info const& type;
  char const* name;
};
#define OZ_TYPE(Class)                                                                                       \
  {                                                                                                          \
    typeid(Class), #Class                                                                                    \
  }

struct TypedClass
{
  OzString const& class_name;
  OzString const* type_id;
  char const* name;
};
#define OZ_TYPED(Class)                                                                                      \
  {                                                                                                          \
    Class::class_name_, Class::type_id(), #Class                                                             \
  }
} // namespace

TEST(Surface, HasTheFunctionsForChecksAndDumps)
{
  EXPECT_TRUE(is_there<void (*)(char*, int)>(&Oz_assert));
  EXPECT_TRUE(is_there<OzAssertionHandler (*)(OzAssertionHandler const&, bool)>(&set_dkb_assertion_handler));
  EXPECT_TRUE(is_there<double (*)()>(&Oz_BogusDouble));
  EXPECT_TRUE(is_there<int (*)()>(&Oz_BogusInt));
  EXPECT_TRUE(is_there<int (*)()>(&Oz_DebugIndentStep));
  EXPECT_TRUE(is_there<double (*)()>(&oztfp0_));
  EXPECT_TRUE(is_there<void (*)(OzJournal&, int)>(&Oz_DebugIndentation));
}

TEST(Surface, HasTheDumpsOfNumbers)
{
  typedef OzArray<double> Numbers;
  EXPECT_TRUE(is_there<void (*)(OzJournal&, Numbers const&, int, int, int, int)>(&Oz_debug_double_array));
  EXPECT_TRUE(
      is_there<void (*)(OzJournal&, int, int, Numbers const&, int, int, int, bool)>(&Oz_debug_double_matrix));
  EXPECT_TRUE(
      is_there<void (*)(OzJournal&, int, int, Numbers const&, int, int, int, int)>(&Oz_debug_vector_array));
  EXPECT_TRUE(is_there<void (*)(OzJournal&, int, int, int, Numbers const&, int, int, int, bool)>(
      &Oz_debug_vector_matrix));
  EXPECT_TRUE(is_there<void (*)(OzJournal&, Numbers const&, int, int, int, int)>(&oz_arraydebug));
  EXPECT_TRUE(is_there<void (*)(OzJournal&, int, Numbers const&, int, int, int, int)>(&oz_arraydebug));
  EXPECT_TRUE(
      is_there<void (*)(OzJournal&, bool, int, int, Numbers const&, int, int, int, int)>(&oz_arraydebug));
  EXPECT_TRUE(is_there<void (*)(OzJournal&, bool, int, int, int, Numbers const&, int, int, int, int)>(
      &oz_arraydebug));
}

TEST(Surface, HasTheFunctionsForStrings)
{
  EXPECT_TRUE(is_there<OzString (*)(int)>(&oz_blankstring));
  EXPECT_TRUE(is_there<OzString (*)(OzString const&)>(&oz_tolower));
  EXPECT_TRUE(is_there<void (*)(OzString&)>(&oz_tolower));
  EXPECT_TRUE(is_there<std::vector<OzString> (*)(OzString const&, char const*)>(&oz_split));
}

TEST(Surface, HasTheFunctionsForResults)
{
  EXPECT_TRUE(is_there<int (*)(OzResult const&)>(&oz_error_number));
  EXPECT_TRUE(is_there<void (*)(OzResult::CodeID, OzErr::ErrorNumber, OzResult&)>(&OzErr::make_result));
  EXPECT_TRUE(is_there<OzErr::ErrorNumber (*)(OzResult const&)>(&OzErr::error_number));
  EXPECT_TRUE(is_there<char const* (*)(OzString const* const&, int)>(&OzErr::translate_error_number));
}

TEST(Surface, HasTheFunctionsForNumbers)
{
  EXPECT_TRUE(is_there<double (*)(int, int)>(&oz_binomial_coeff));
  EXPECT_TRUE(is_there<void (*)(int, int, int, int&, int&)>(&oz_congruence_info));
  EXPECT_TRUE(is_there<void (*)(double, double, double, double&, int&, OzEvalLimit)>(&oz_congruence_info));
  EXPECT_TRUE(is_there<void (*)(double&)>(&oz_rerange));
  EXPECT_TRUE(is_there<void (*)(double&, OzInterval const&)>(&oz_rerange));
  EXPECT_TRUE(is_there<double (*)(double, double, double, OzInterval const&)>(&oz_rerange));
  typedef OzArray<double> Numbers;
  EXPECT_TRUE(is_there<void (*)(Numbers&, OzInterval const&, OzInterval const&, double const*)>(
      &oz_linear_function_evaluate));
}

TEST(Surface, PrintsPositionsAndVectorsOfParameters)
{
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzUVPar const&)>(&operator<<));
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzUVVec const&)>(&operator<<));
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzUVWPar const&)>(&operator<<));
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzUVWVec const&)>(&operator<<));
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzTrianglePar const&)>(&operator<<));
  EXPECT_TRUE(is_there<OzJournal& (*)(OzJournal&, OzTriangleVec const&)>(&operator<<));
}

TEST(Surface, HasTheFunctionsForTiming)
{
  EXPECT_TRUE(is_there<void (*)(int&, char*, char*, int)>(&time_start));
  EXPECT_TRUE(is_there<void (*)(int&, char*, int)>(&time_end));
}

TEST(Surface, HasTheHooks)
{
  EXPECT_TRUE(is_there<void (**)(char const*, int)>(&dkb_assertion_handler));
  EXPECT_TRUE(is_there<void (**)(char const*, char const*)>(&dkb_pure_virtual_called));
  typedef OzArray<std::size_t> Sizes;
  EXPECT_TRUE(is_there<void (**)(Sizes const&, Sizes const&, Sizes const&)>(&dkb_deadlock_detector));
  EXPECT_TRUE(is_there<int*>(&Oz_ASSERT_FALSE));
}

TEST(Surface, HasTheGlobalData)
{
  EXPECT_TRUE(is_there<OzEndExprToken*>(&ozEndExpr));
  EXPECT_TRUE(is_there<OzEndSectionToken*>(&ozEndSection));
  EXPECT_TRUE(is_there<OzJournal**>(&OzJournalProvider::journal_));
  EXPECT_TRUE(is_there<int*>(&OzDynObj::IDENTITY_INDEX_));
  EXPECT_TRUE(is_there<LumMutex*>(&dkb_critical_mutex));
  EXPECT_TRUE(is_there<std::uint64_t*>(&OzMutexId::MUTEX_ID_));
  EXPECT_TRUE(is_there<OzRaceConditionProtection::Type*>(&OzRaceConditionProtection::Mode_));
  EXPECT_TRUE(is_there<std::uint64_t*>(&OzTaskProcessor::Id_));
  EXPECT_TRUE(is_there<OzTSJobProcessor*>(&ts_job_processor));
  EXPECT_TRUE(is_there<OzOperationBehaviour**>(&OzOperationBehaviour::the_instance_));
  EXPECT_TRUE(is_there<short const*>(&OzVersionStamp::bl_base));
  EXPECT_TRUE(is_there<short const*>(&OzVersionStamp::fl_base));
  EXPECT_TRUE(is_there<OzString const*>(&OzInterface::class_name_));
  EXPECT_TRUE(is_there<OzString const*>(&OzErr::class_name_));
  EXPECT_TRUE(is_there<OzString const*>(&OzObject::default_name_));
  EXPECT_TRUE(is_there<std::uint64_t const*>(&OzExtIdAttrib::illegal_extid_));
  EXPECT_TRUE(is_there<std::uint64_t const*>(&OzGMKIdAttrib::illegal_extid_));
  EXPECT_TRUE(is_there<int const*>(&OzHashTable::DEFAULT_SIZE));
}

TEST(Surface, EveryPolymorphicClassHasItsTypeInformation)
{
  TypeInformation const classes[] = {
      OZ_TYPE(OzDynObj),
      OZ_TYPE(OzRCObj),
      OZ_TYPE(OzInterface),
      OZ_TYPE(OzToken),
      OZ_TYPE(OzEndExprToken),
      OZ_TYPE(OzEndSectionToken),
      OZ_TYPE(OzJournal),
      OZ_TYPE(OzFileJournal),
      OZ_TYPE(OzStdErrJournal),
      OZ_TYPE(OzStdOutJournal),
      OZ_TYPE(OzResult),
      OZ_TYPE(OzLink),
      OZ_TYPE(OzLinkList),
      OZ_TYPE(OzRBTreeNode),
      OZ_TYPE(OzRBTree),
      OZ_TYPE(OzHeapNode),
      OZ_TYPE(OzHeap),
      OZ_TYPE(OzHashTableNode),
      OZ_TYPE(OzHashTable),
      OZ_TYPE(OzStdIntHashFunctor),
      OZ_TYPE(OzStdPtrdiffHashFunctor),
      OZ_TYPE(OzStdDoubleHashFunctor),
      OZ_TYPE(OzStdStringHashFunctor),
      OZ_TYPE(OzObject),
      OZ_TYPE(OzAttrib),
      OZ_TYPE(OzReactor),
      OZ_TYPE(OzEvent),
      OZ_TYPE(OzObjectModified),
      OZ_TYPE(OzObjectDelete),
      OZ_TYPE(OzReport),
      OZ_TYPE(OzNameAttrib),
      OZ_TYPE(OzExtIdAttrib),
      OZ_TYPE(OzGMKIdAttrib),
      OZ_TYPE(OzDoubleAttrib),
      OZ_TYPE(OzObjectTable),
      OZ_TYPE(OzObjTable),
      OZ_TYPE(OzTableSet),
      OZ_TYPE(OzObjectDependency),
      OZ_TYPE(OzObjDependency),
      OZ_TYPE(OzObjectDependencyRole),
      OZ_TYPE(OzArtificialObjectDependency),
      OZ_TYPE(OzObjectDependencyFilter),
      OZ_TYPE(OzObjectDependencyNodeFilter),
      OZ_TYPE(OzDynObjArrayIterator),
      OZ_TYPE(OzReleaseTaskProcessorLocal),
      OZ_TYPE(OzTaskProcessor),
      OZ_TYPE(OzTask),
      OZ_TYPE(OzTaskServiceRequest),
      OZ_TYPE(OzTaskServiceRequestQueue),
      OZ_TYPE(OzServerRequestDeque),
      OZ_TYPE(OzTaskService),
      OZ_TYPE(OzConfigurableTaskService),
      OZ_TYPE(OzTaskServer),
      OZ_TYPE(Faked_OzTaskServer),
      OZ_TYPE(OzMacroTask),
      OZ_TYPE(OzJob),
      OZ_TYPE(OzJobStatistics),
      OZ_TYPE(OzSequentialJob),
      OZ_TYPE(OzTSJobProcessor),
      OZ_TYPE(OzTSTaskProcessor),
      OZ_TYPE(OzTSTaskServer),
      OZ_TYPE(OzTSJob),
      OZ_TYPE(OzOperationBehaviour),
      OZ_TYPE(OzOperationDefaultBehaviour),
      OZ_TYPE(OzVersionedAlgorithm),
      OZ_TYPE(OzEdgeSorter),
      OZ_TYPE(OzProgressHandler),
      OZ_TYPE(OzAsymptoticProgressIndicator),
      OZ_TYPE(OzProgressIO),
      OZ_TYPE(LumThreads),
  };
  for (TypeInformation const& c : classes)
    EXPECT_EQ(readable(c.type), c.name);
}

TEST(Surface, EveryTypedClassHasItsOwnName)
{
  TypedClass const classes[] = {
      OZ_TYPED(OzDynObj),
      OZ_TYPED(OzObject),
      OZ_TYPED(OzAttrib),
      OZ_TYPED(OzReactor),
      OZ_TYPED(OzEvent),
      OZ_TYPED(OzObjectModified),
      OZ_TYPED(OzObjectDelete),
      OZ_TYPED(OzReport),
      OZ_TYPED(OzNameAttrib),
      OZ_TYPED(OzExtIdAttrib),
      OZ_TYPED(OzGMKIdAttrib),
      OZ_TYPED(OzDoubleAttrib),
      OZ_TYPED(OzObjectDependencyRole),
      OZ_TYPED(OzArtificialObjectDependency),
  };
  for (TypedClass const& c : classes)
  {
    EXPECT_TRUE(c.class_name == c.name) << c.name;
    EXPECT_EQ(c.type_id, &c.class_name) << c.name;
  }
}

// Classes without virtual functions have no type information of their own: an operation stands for each.
TEST(Surface, PlainClassesHaveTheirOperations)
{
  EXPECT_TRUE(is_there<OzString& (OzString::*)(OzString const&)>(&OzString::append));
  EXPECT_TRUE(is_there<OzString& (OzString::*)(int, char const*, ...)>(&OzString::format));
  EXPECT_TRUE(is_there<void (OzRaceConditionProtection::*)()>(&OzRaceConditionProtection::Lock));
  EXPECT_TRUE(is_there<void (*)(OzRaceConditionProtection::Type)>(&OzRaceConditionProtection::SetMode));
  EXPECT_TRUE(is_there<void (LumMutex::*)()>(&LumMutex::Lock));
  EXPECT_TRUE(is_there<OzJob* (*)(std::size_t, bool)>(&OzSequential::CreateJob));
  EXPECT_TRUE(is_there<OzJob* (*)(std::size_t, bool)>(&OzEKProcessor::CreateJob));
  EXPECT_TRUE(is_there<OzJob* (*)(std::size_t, bool, OzProgressHandler*)>(&OzTSProcessor::CreateJob));
  EXPECT_TRUE(is_there<double (OzTimer::*)() const>(&OzTimer::get_time));
  EXPECT_TRUE(is_there<bool (OzVersionStamp::*)(OzVersionStamp const&)>(&OzVersionStamp::operator>=));
  EXPECT_TRUE(
      is_there<bool (*)(OzOperationBehaviour*, OzVersionStamp const&)>(&OzVersioning::active_modification));
  EXPECT_TRUE(is_there<double (OzInterval::*)() const>(&OzInterval::length));
  EXPECT_TRUE(is_there<void (OzUVPar::*)(OzJournal&, OzDebug, bool, int) const>(&OzUVPar::debug));
  EXPECT_TRUE(is_there<void (OzUVVec::*)(OzJournal&, OzDebug, bool, int) const>(&OzUVVec::debug));
  EXPECT_TRUE(is_there<void (OzUVWPar::*)(OzJournal&, OzDebug, bool, int) const>(&OzUVWPar::debug));
  EXPECT_TRUE(is_there<void (OzUVWVec::*)(OzJournal&, OzDebug, bool, int) const>(&OzUVWVec::debug));
  EXPECT_TRUE(is_there<void (OzTrianglePar::*)(OzJournal&, OzDebug, bool, int) const>(&OzTrianglePar::debug));
  EXPECT_TRUE(is_there<void (OzTriangleVec::*)(OzJournal&, OzDebug, bool, int) const>(&OzTriangleVec::debug));
  typedef OzChunk*& Chunks;
  EXPECT_TRUE(
      is_there<OzChunk* (*)(std::uint64_t&, std::uint64_t, std::uint64_t, OzJournal*)>(&OzChunk::get_chunk));
  EXPECT_TRUE(is_there<void* (*)(std::uint64_t&, Chunks, Chunks, std::uint64_t, std::uint64_t, OzJournal*)>(
      &OzChunk::OzChunkMalloc));
  EXPECT_TRUE(is_there<void (*)(Chunks, void*, bool, Chunks, OzJournal*)>(&OzChunk::OzChunkFree));
  EXPECT_TRUE(is_there<void (*)(Chunks, Chunks, bool, OzJournal*)>(&OzChunk::OzChunkReinit));
  EXPECT_TRUE(is_there<void (*)(Chunks, OzJournal*)>(&OzChunk::OzChunkClear));
  EXPECT_TRUE(is_there<std::uint64_t (OzAddressSetBase::*)() const>(&OzAddressSetBase::size));
  EXPECT_TRUE(is_there<std::uint64_t (OzAddressMapBase::*)() const>(&OzAddressMapBase::size));
  EXPECT_TRUE(is_there<void (OzListIndex::*)()>(&OzListIndex::reset));
  OzMutexId const id;
  EXPECT_NE(id.Id(), 0u);
  OzCriticalDkbRegion const region;
}

// What clients derive from can be derived from outside the library, as here.

namespace
{
class Object : public OzObject
{
public:
  OzDynObj* clone() const override { return new Object(*this); }
};

class Attrib : public OzAttrib
{
public:
  bool propagate() const override { return false; }
  bool invariant(OzEvent const&) const override { return true; }
  OzDynObj* clone() const override { return new Attrib(*this); }
};

class Reactor : public OzReactor
{
public:
  bool propagate() const override { return false; }
  void react(OzEvent const&) override { ++events; }
  OzDynObj* clone() const override { return new Reactor(*this); }

  int events = 0;
};

class Event : public OzEvent
{
public:
  OzDynObj* clone() const override { return new Event(*this); }
};

class Report : public OzReport
{
public:
  OzDynObj* clone() const override { return new Report(*this); }
};

class Sorter : public OzEdgeSorter
{
public:
  Sorter()
    : OzEdgeSorter(2, false)
  {
  }
  double edge_gap(std::uint64_t, std::uint64_t, bool, bool) const override { return -1.0; }
};

class Task : public OzTask
{
public:
  using OzTask::Execute;
  bool Execute() override { return true; }
};

class Service : public OzTaskService
{
public:
  bool Process(OzTaskServiceRequest*&) override { return true; }
};

class Request : public OzTaskServiceRequest
{
};

class Progress : public OzProgressHandler
{
protected:
  void increase_progress(unsigned) override {}
  bool check_if_cancelled() const override { return false; }
};

class Node : public OzHashTableNode
{
public:
  bool equal(OzHashTableNode const*) const override { return true; }
  OzHashTableNode* clone() const override { return new Node(*this); }
};

class Table : public OzHashTable
{
public:
  using OzHashTable::insert_node;

protected:
  std::uint32_t hash_value(OzHashTableNode const*) const override { return 0; }
};

class Behaviour : public OzOperationDefaultBehaviour
{
public:
  int is_a_lumdkb_op_behaviour() const override { return 1; }
};
} // namespace

TEST(Surface, WhatIsMadeForDerivationIsDerivedFrom)
{
  Object object;
  object.add_attrib(new Attrib);
  Reactor* const reactor = new Reactor;
  object.add_reactor(reactor);
  object.notify(Event());
  EXPECT_EQ(reactor->events, 1);
  EXPECT_TRUE(Report().isA(OzReport::type_id()));

  Sorter sorter;
  sorter.sort(OzEdgeSorter::OzSortClosestFirst, false);
  EXPECT_EQ(sorter.n_chain(), 2u);

  Service service;
  Request request;
  OzTaskServiceRequest* asked = &request;
  EXPECT_TRUE(service.Process(asked));
  EXPECT_TRUE(Task().Execute(nullptr));
  EXPECT_FALSE(Progress().is_cancelled());

  Table table;
  EXPECT_TRUE(table.insert_node(new Node));
  EXPECT_EQ(Behaviour().is_a_lumdkb_op_behaviour(), 1);
}
