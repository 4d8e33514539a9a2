#include "ozstandardattribs.h"

#include "ozarray.h"
#include "ozobject.h"

#include "model_doubles.h"
#include "report_recorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <type_traits>

using ::testing::IsEmpty;

namespace
{
constexpr std::uint64_t NO_ID = 18446744073709551615u;

using CompareState = OzGMKIdAttrib::OzGMKCompareState;
constexpr CompareState MATCHED = static_cast<CompareState>(17); // a value of a client's own
constexpr OzDoubleAttrib::Usage RADIUS = static_cast<OzDoubleAttrib::Usage>(3);
constexpr OzDoubleAttrib::Usage WEIGHT = static_cast<OzDoubleAttrib::Usage>(4);

/// How many attributes of `type` an object has.
std::uint64_t count_of(OzObject const& object, OzString const* type)
{
  OzArray<OzAttrib*> found;
  return object.find_all_attribs_by_type(type, found);
}

template <class Attrib>
Attrib* make();
template <>
OzNameAttrib* make()
{
  return new OzNameAttrib("bolt");
}
template <>
OzExtIdAttrib* make()
{
  return new OzExtIdAttrib(7);
}
template <>
OzGMKIdAttrib* make()
{
  return new OzGMKIdAttrib(7, MATCHED);
}
template <>
OzDoubleAttrib* make()
{
  return new OzDoubleAttrib(RADIUS, 2.5);
}

bool same_value(OzNameAttrib const& a, OzNameAttrib const& b)
{
  return a.get_name() == b.get_name();
}
bool same_value(OzExtIdAttrib const& a, OzExtIdAttrib const& b)
{
  return a.get_extid() == b.get_extid();
}
bool same_value(OzGMKIdAttrib const& a, OzGMKIdAttrib const& b)
{
  return a.get_extid() == b.get_extid() && a.get_compare_state() == b.get_compare_state();
}
bool same_value(OzDoubleAttrib const& a, OzDoubleAttrib const& b)
{
  OzDoubleAttrib::Usage usages[2] = {OzDoubleAttrib::OzUsageDefault, OzDoubleAttrib::OzUsageDefault};
  double values[2] = {0.0, 1.0};
  a.get(usages[0], values[0]);
  b.get(usages[1], values[1]);
  return usages[0] == usages[1] && values[0] == values[1];
}

template <class Attrib>
class StandardAttrib : public ::testing::Test
{
};
using StandardAttribs = ::testing::Types<OzNameAttrib, OzExtIdAttrib, OzGMKIdAttrib, OzDoubleAttrib>;
TYPED_TEST_SUITE(StandardAttrib, StandardAttribs, );
} // namespace

// What all four have in common.

TYPED_TEST(StandardAttrib, IsOfItsOwnTypeOfThatOfAttributesAndOfTheRoot)
{
  std::unique_ptr<OzAttrib> const attrib(make<TypeParam>());

  EXPECT_EQ(TypeParam::type_id(), &TypeParam::class_name_);
  EXPECT_EQ(attrib->type(), TypeParam::type_id());
  EXPECT_EQ(&attrib->class_name(), TypeParam::type_id());
  EXPECT_TRUE(attrib->isA(TypeParam::type_id()));
  EXPECT_TRUE(attrib->isA(OzAttrib::type_id()));
  EXPECT_TRUE(attrib->isA(OzDynObj::type_id()));
  EXPECT_FALSE(attrib->isA(OzObject::type_id()));
  EXPECT_FALSE(attrib->isA(nullptr));
}

TYPED_TEST(StandardAttrib, IsNotOfATypeWithTheSameText)
{
  std::unique_ptr<OzAttrib> const attrib(make<TypeParam>());
  OzString const same_text(TypeParam::class_name_);

  EXPECT_FALSE(attrib->isA(&same_text));
}

TYPED_TEST(StandardAttrib, IsNoneOfTheOtherThree)
{
  std::unique_ptr<OzAttrib> const attrib(make<TypeParam>());
  OzString const* const types[] = {OzNameAttrib::type_id(), OzExtIdAttrib::type_id(),
                                   OzGMKIdAttrib::type_id(), OzDoubleAttrib::type_id()};

  for (OzString const* const type : types)
    EXPECT_EQ(attrib->isA(type), type == TypeParam::type_id()) << type->as_const_c_string();
}

TYPED_TEST(StandardAttrib, CastGivesTheAttributeOrNull)
{
  std::unique_ptr<TypeParam> const attrib(make<TypeParam>());
  OzDynObj* const as_root = attrib.get();
  OzDynObj const* const as_const_root = attrib.get();
  Log log;
  TestAttrib other("other", log);
  OzDynObj* const as_other = &other;
  OzDynObj const* const as_const_other = &other;

  EXPECT_EQ(TypeParam::cast(as_root), attrib.get());
  EXPECT_EQ(TypeParam::cast(as_const_root), attrib.get());
  EXPECT_EQ(TypeParam::cast(as_other), nullptr);
  EXPECT_EQ(TypeParam::cast(as_const_other), nullptr);
  EXPECT_EQ(TypeParam::cast(static_cast<OzDynObj*>(nullptr)), nullptr);
  EXPECT_EQ(TypeParam::cast(static_cast<OzDynObj const*>(nullptr)), nullptr);
  EXPECT_EQ(TypeParam::cast(nullptr), nullptr);
}

TYPED_TEST(StandardAttrib, BelongsToOneObjectAndSurvivesEveryEvent)
{
  std::unique_ptr<OzAttrib> const attrib(make<TypeParam>());

  EXPECT_FALSE(attrib->sharable());
  EXPECT_FALSE(attrib->propagate());
  EXPECT_TRUE(attrib->invariant(OzObjectModified(1)));
  EXPECT_TRUE(attrib->invariant(OzObjectDelete(1)));
}

TYPED_TEST(StandardAttrib, ACloneHasTheValueAndAnIdentityOfItsOwn)
{
  std::unique_ptr<TypeParam> const attrib(make<TypeParam>());
  attrib->add_ref();

  // Cloning is for callers through the base.
  std::unique_ptr<OzDynObj> const clone(static_cast<OzDynObj&>(*attrib).clone());

  ASSERT_EQ(clone->type(), TypeParam::type_id());
  TypeParam const& typed = static_cast<TypeParam const&>(*clone);
  EXPECT_TRUE(same_value(typed, *attrib));
  EXPECT_EQ(typed.identity(), attrib->identity() + 1);
  EXPECT_EQ(typed.n_refs(), 0);
  attrib->remove_ref();
}

TYPED_TEST(StandardAttrib, IsNeitherMadeWithoutAValueNorCopiedNorAssigned)
{
  EXPECT_FALSE(std::is_default_constructible_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
}

TYPED_TEST(StandardAttrib, StaysBehindWhenItsObjectIsCopied)
{
  TestObject object;
  object.add_attrib(make<TypeParam>());

  TestObject const copy(object);

  EXPECT_EQ(count_of(copy, TypeParam::type_id()), 0u);
  EXPECT_EQ(count_of(object, TypeParam::type_id()), 1u);
}

TYPED_TEST(StandardAttrib, StaysWhenItsObjectIsModified)
{
  TestObject object;
  object.add_attrib(make<TypeParam>());

  object.notify();
  object.notify(OzObjectDelete(object.identity()));

  EXPECT_EQ(count_of(object, TypeParam::type_id()), 1u);
}

TEST(StandardAttribNames, AreThoseOfTheClasses)
{
  EXPECT_STREQ(OzNameAttrib::class_name_.as_const_c_string(), "OzNameAttrib");
  EXPECT_STREQ(OzExtIdAttrib::class_name_.as_const_c_string(), "OzExtIdAttrib");
  EXPECT_STREQ(OzGMKIdAttrib::class_name_.as_const_c_string(), "OzGMKIdAttrib");
  EXPECT_STREQ(OzDoubleAttrib::class_name_.as_const_c_string(), "OzDoubleAttrib");
}

// Names.

TEST(OzNameAttrib, HoldsAName)
{
  OzNameAttrib attrib("bolt");
  EXPECT_STREQ(attrib.get_name().as_const_c_string(), "bolt");

  attrib.set_name("nut");
  EXPECT_STREQ(attrib.get_name().as_const_c_string(), "nut");
}

TEST(OzNameAttrib, TheNewestNameOfAnObjectIsFoundByType)
{
  TestObject object;
  object.add_attrib(new OzNameAttrib("old"));
  object.add_attrib(new OzNameAttrib("new"));
  object.add_attrib(new OzExtIdAttrib(1));

  OzNameAttrib const* const name = OzNameAttrib::cast(object.find_attrib_by_type(OzNameAttrib::type_id()));

  ASSERT_NE(name, nullptr);
  EXPECT_STREQ(name->get_name().as_const_c_string(), "new");
}

// External numbers.

TEST(OzExtIdAttrib, TheNumberThatIsNoneHasAllBitsSet)
{
  std::uint64_t const& bound = OzExtIdAttrib::illegal_extid_;

  EXPECT_EQ(bound, NO_ID);
  EXPECT_EQ(OzExtIdAttrib::illegal_extid(), NO_ID);
}

TEST(OzExtIdAttrib, HoldsANumber)
{
  ReportRecorder const recorder;
  OzExtIdAttrib attrib(7);
  EXPECT_EQ(attrib.get_extid(), 7u);

  attrib.set_extid(8);
  EXPECT_EQ(attrib.get_extid(), 8u);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzExtIdAttrib, IsConstructedWithAnIllegalNumberUnderReport)
{
  ReportRecorder const recorder;
  OzExtIdAttrib const attrib(NO_ID);

  EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  EXPECT_EQ(attrib.get_extid(), NO_ID);
}

TEST(OzExtIdAttrib, SetReportsAndRefusesAnIllegalNumber)
{
  OzExtIdAttrib attrib(7);
  {
    ReportRecorder const recorder;
    attrib.set_extid(NO_ID);
    EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  }
  EXPECT_EQ(attrib.get_extid(), 7u);

  attrib.set_extid(NO_ID); // refused without a handler too
  EXPECT_EQ(attrib.get_extid(), 7u);
}

TEST(OzExtIdAttrib, AnObjectWithoutOneAnswersTheIllegalNumber)
{
  TestObject object;
  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), NO_ID);

  object.add_attrib(new OzGMKIdAttrib(7, MATCHED));
  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), NO_ID);
}

TEST(OzExtIdAttrib, SetToObjectAddsAnAttribute)
{
  TestObject object;
  ReportRecorder const recorder;

  OzExtIdAttrib::set_extid_to_object(object, 7);

  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), 7u);
  EXPECT_EQ(count_of(object, OzExtIdAttrib::type_id()), 1u);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzExtIdAttrib, ASecondNumberIsReportedAndTakesThePlaceOfTheFirst)
{
  TestObject object;
  OzExtIdAttrib::set_extid_to_object(object, 7);
  ReportRecorder const recorder;

  OzExtIdAttrib::set_extid_to_object(object, 8);

  EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), 8u);
  EXPECT_EQ(count_of(object, OzExtIdAttrib::type_id()), 1u);
}

TEST(OzExtIdAttrib, SetToObjectReportsAndRefusesAnIllegalNumber)
{
  TestObject bare;
  TestObject object;
  OzExtIdAttrib::set_extid_to_object(object, 7);
  {
    ReportRecorder recorder;
    OzExtIdAttrib::set_extid_to_object(bare, NO_ID);
    EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));

    recorder.clear();
    OzExtIdAttrib::set_extid_to_object(object, NO_ID);
    EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  }
  OzExtIdAttrib::set_extid_to_object(bare, NO_ID);

  EXPECT_EQ(count_of(bare, OzAttrib::type_id()), 0u);
  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), 7u);
}

TEST(OzExtIdAttrib, TheNewestOfSeveralCounts)
{
  TestObject object;
  OzExtIdAttrib* const older = new OzExtIdAttrib(1);
  object.add_attrib(older);
  object.add_attrib(new OzExtIdAttrib(2));

  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), 2u);
  OzExtIdAttrib::set_extid_to_object(object, 3);
  EXPECT_EQ(OzExtIdAttrib::get_extid_from_object(object), 3u);
  EXPECT_EQ(older->get_extid(), 1u);
}

// Numbers of the modeller.

TEST(OzGMKIdAttrib, TheNumberThatIsNoneHasAllBitsSet)
{
  std::uint64_t const& bound = OzGMKIdAttrib::illegal_extid_;

  EXPECT_EQ(bound, NO_ID);
  EXPECT_EQ(OzGMKIdAttrib::illegal_extid(), NO_ID);
}

TEST(OzGMKIdAttrib, TheTwoStatesThatTheLibraryKnows)
{
  EXPECT_EQ(static_cast<int>(OzGMKIdAttrib::OzGMKCompareUnknown), 0);
  EXPECT_EQ(static_cast<int>(OzGMKIdAttrib::OzGMKCompareDefault), 1);
}

TEST(OzGMKIdAttrib, HoldsANumberAndAState)
{
  ReportRecorder const recorder;
  OzGMKIdAttrib attrib(7, MATCHED);
  EXPECT_EQ(attrib.get_extid(), 7u);
  EXPECT_EQ(attrib.get_compare_state(), MATCHED);

  attrib.set_extid(8);
  attrib.set_compare_state(OzGMKIdAttrib::OzGMKCompareDefault);
  EXPECT_EQ(attrib.get_extid(), 8u);
  EXPECT_EQ(attrib.get_compare_state(), OzGMKIdAttrib::OzGMKCompareDefault);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzGMKIdAttrib, IsConstructedWithAnIllegalNumberUnderReport)
{
  ReportRecorder const recorder;
  OzGMKIdAttrib const attrib(NO_ID, MATCHED);

  EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  EXPECT_EQ(attrib.get_extid(), NO_ID);
  EXPECT_EQ(attrib.get_compare_state(), MATCHED);
}

TEST(OzGMKIdAttrib, SetReportsAnIllegalNumberAndTakesIt)
{
  OzGMKIdAttrib attrib(7, MATCHED);
  ReportRecorder const recorder;

  attrib.set_extid(NO_ID);

  EXPECT_EQ(recorder.units(), reports(1, "ozstandardattribs.cpp"));
  EXPECT_EQ(attrib.get_extid(), NO_ID);
}

TEST(OzGMKIdAttrib, AnObjectWithoutOneAnswersTheIllegalNumberAndStateZero)
{
  TestObject object;
  object.add_attrib(new OzExtIdAttrib(7));
  CompareState state = MATCHED;

  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, &state), NO_ID);
  EXPECT_EQ(static_cast<int>(state), 0);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), NO_ID);
  EXPECT_EQ(static_cast<int>(OzGMKIdAttrib::get_compare_state(object)), 0);
}

TEST(OzGMKIdAttrib, SetToObjectWithoutAStateGivesStateOne)
{
  TestObject object;
  ReportRecorder const recorder;

  OzGMKIdAttrib::set_extid_to_object(object, 7, nullptr);

  CompareState state = MATCHED;
  EXPECT_EQ(static_cast<int>(OzGMKIdAttrib::get_compare_state(object)), 1);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, &state), 7u);
  EXPECT_EQ(static_cast<int>(state), 1);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), 7u);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzGMKIdAttrib, SetToObjectWithAStateStoresBoth)
{
  TestObject object;
  CompareState state = MATCHED;

  OzGMKIdAttrib::set_extid_to_object(object, 7, &state);

  EXPECT_EQ(OzGMKIdAttrib::get_compare_state(object), MATCHED);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), 7u);
}

TEST(OzGMKIdAttrib, SetToObjectChangesTheNewestAttributeWithoutAReport)
{
  TestObject object;
  OzGMKIdAttrib* const older = new OzGMKIdAttrib(1, OzGMKIdAttrib::OzGMKCompareDefault);
  object.add_attrib(older);
  object.add_attrib(new OzGMKIdAttrib(2, MATCHED));
  ReportRecorder const recorder;

  OzGMKIdAttrib::set_extid_to_object(object, 3, nullptr);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), 3u);
  EXPECT_EQ(OzGMKIdAttrib::get_compare_state(object), MATCHED); // kept, since none was given

  CompareState state = static_cast<CompareState>(18);
  OzGMKIdAttrib::set_extid_to_object(object, 4, &state);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), 4u);
  EXPECT_EQ(OzGMKIdAttrib::get_compare_state(object), state);

  EXPECT_EQ(count_of(object, OzGMKIdAttrib::type_id()), 2u);
  EXPECT_EQ(older->get_extid(), 1u);
  EXPECT_EQ(older->get_compare_state(), OzGMKIdAttrib::OzGMKCompareDefault);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzGMKIdAttrib, AnIllegalNumberForAnAttributeThatIsThereChangesOnlyTheState)
{
  TestObject object;
  OzGMKIdAttrib::set_extid_to_object(object, 7, nullptr);
  CompareState state = MATCHED;
  ReportRecorder const recorder;

  OzGMKIdAttrib::set_extid_to_object(object, NO_ID, &state);

  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), 7u);
  EXPECT_EQ(OzGMKIdAttrib::get_compare_state(object), MATCHED);
  EXPECT_THAT(recorder.units(), IsEmpty());
}

TEST(OzGMKIdAttrib, AnIllegalNumberForABareObjectIsReportedTwiceAndAttached)
{
  TestObject object;
  ReportRecorder const recorder;

  OzGMKIdAttrib::set_extid_to_object(object, NO_ID, nullptr);

  EXPECT_EQ(recorder.units(), reports(2, "ozstandardattribs.cpp"));
  ASSERT_EQ(count_of(object, OzGMKIdAttrib::type_id()), 1u);
  EXPECT_EQ(static_cast<int>(OzGMKIdAttrib::get_compare_state(object)), 1);
  EXPECT_EQ(OzGMKIdAttrib::get_extid_from_object(object, nullptr), NO_ID);
}

// Numbers with a usage.

TEST(OzDoubleAttrib, HoldsAUsageAndAValue)
{
  OzDoubleAttrib const attrib(RADIUS, 2.5);
  OzDoubleAttrib::Usage usage = OzDoubleAttrib::OzUsageDefault;
  double value = 0.0;

  attrib.get(usage, value);

  EXPECT_EQ(usage, RADIUS);
  EXPECT_EQ(value, 2.5);
  EXPECT_EQ(static_cast<int>(OzDoubleAttrib::OzUsageDefault), 0);
}

TEST(OzDoubleAttrib, AnObjectWithoutOneForTheUsageAnswersFalseAndZero)
{
  TestObject object;
  double value = 9.0;
  EXPECT_FALSE(OzDoubleAttrib::get_value_from_object(object, RADIUS, value));
  EXPECT_EQ(value, 0.0);

  OzDoubleAttrib::set_value_to_object(object, WEIGHT, 4.0);
  value = 9.0;
  EXPECT_FALSE(OzDoubleAttrib::get_value_from_object(object, RADIUS, value));
  EXPECT_EQ(value, 0.0);
}

TEST(OzDoubleAttrib, ASecondValueForAUsageHidesTheFirstOneWhichStays)
{
  TestObject object;
  OzDoubleAttrib::set_value_to_object(object, RADIUS, 1.0);
  OzDoubleAttrib::set_value_to_object(object, WEIGHT, 2.0);
  OzDoubleAttrib::set_value_to_object(object, RADIUS, 3.0);
  double value = 0.0;

  EXPECT_EQ(count_of(object, OzDoubleAttrib::type_id()), 3u);
  EXPECT_TRUE(OzDoubleAttrib::get_value_from_object(object, RADIUS, value));
  EXPECT_EQ(value, 3.0);
  EXPECT_TRUE(OzDoubleAttrib::get_value_from_object(object, WEIGHT, value));
  EXPECT_EQ(value, 2.0);

  object.detach_attrib(object.find_attrib_by_type(OzDoubleAttrib::type_id()));
  EXPECT_TRUE(OzDoubleAttrib::get_value_from_object(object, RADIUS, value));
  EXPECT_EQ(value, 1.0);
}
