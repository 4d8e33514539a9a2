#include "ozdynobj.h"

#include "ozattrib.h"
#include "ozevent.h"
#include "ozobject.h"
#include "ozreactor.h"
#include "ozreport.h"
#include "ozstandardattribs.h"

#include "model_doubles.h"
#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
// Built before main, as static objects of a client are: the first of the process, and the one after it.
OzObjectModified const first_of_the_process(0);
OzObjectModified const second_of_the_process(0);

/// A type below another one, as a client derives them.
class Shape : public OzDynObj
{
public:
  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  OzDynObj* clone() const override { return new Shape(*this); }
  bool isA(OzString const* t) const override { return t == &class_name_ || OzDynObj::isA(t); }
  int identity() const override { return -1; }

  static Shape* cast(OzDynObj* object) { return cast_to<Shape>(object); }
  static Shape const* cast(OzDynObj const* object) { return cast_to<Shape const>(object); }
  static OzString const* type_id() { return &class_name_; }
  static inline OzString const class_name_ = "Shape";
};

class Circle : public Shape
{
public:
  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  OzDynObj* clone() const override { return new Circle(*this); }
  bool isA(OzString const* t) const override { return t == &class_name_ || Shape::isA(t); }

  static Circle* cast(OzDynObj* object) { return cast_to<Circle>(object); }
  static OzString const* type_id() { return &class_name_; }
  static inline OzString const class_name_ = "Circle";
};

/// Overrides only what it must, so that all else is the root's own.
class Bare : public OzDynObj
{
public:
  OzDynObj* clone() const override { return new Bare(*this); }
  int identity() const override { return -2; }
};
} // namespace

TEST(OzDynObj, IdentitiesStartAtOneAndAreConsecutive)
{
  EXPECT_EQ(first_of_the_process.identity(), 1);
  EXPECT_EQ(second_of_the_process.identity(), 2);
}

TEST(OzDynObj, OneCounterNumbersObjectsAttributesReactorsEventsAndReports)
{
  class Report : public OzReport
  {
  public:
    OzDynObj* clone() const override { return new Report(*this); }
  };
  Log log;
  int const next = OzDynObj::IDENTITY_INDEX_;

  TestObject const object;
  TestAttrib const attrib("a", log);
  TestReactor const reactor("r", log);
  OzObjectDelete const event(1);
  Report const report;

  EXPECT_EQ(object.identity(), next);
  EXPECT_EQ(attrib.identity(), next + 1);
  EXPECT_EQ(reactor.identity(), next + 2);
  EXPECT_EQ(event.identity(), next + 3);
  EXPECT_EQ(report.identity(), next + 4);
  EXPECT_EQ(OzDynObj::IDENTITY_INDEX_, next + 5);
}

TEST(OzDynObj, ATypeIsTheAddressOfTheNameOfItsClass)
{
  Circle const circle;

  EXPECT_EQ(circle.type(), Circle::type_id());
  EXPECT_EQ(&circle.class_name(), Circle::type_id());
  EXPECT_STREQ(circle.classname(), "Circle");
}

TEST(OzDynObj, TheRootAnswersForClassesThatNameNoTypeOfTheirOwn)
{
  Bare const bare;

  EXPECT_STREQ(OzDynObj::class_name_.as_const_c_string(), "OzDynObj");
  EXPECT_EQ(OzDynObj::type_id(), &OzDynObj::class_name_);
  EXPECT_EQ(bare.type(), OzDynObj::type_id());
  EXPECT_EQ(&bare.class_name(), OzDynObj::type_id());
  EXPECT_STREQ(bare.classname(), "OzDynObj");
  EXPECT_TRUE(bare.isA(OzDynObj::type_id()));
  EXPECT_FALSE(bare.isA(Shape::type_id()));
  EXPECT_FALSE(bare.isA(nullptr));
}

TEST(OzDynObj, IsOfItsOwnTypeAndOfThoseItDerivesFrom)
{
  Circle const circle;
  Shape const shape;

  EXPECT_TRUE(circle.isA(Circle::type_id()));
  EXPECT_TRUE(circle.isA(Shape::type_id()));
  EXPECT_TRUE(circle.isA(OzDynObj::type_id()));
  EXPECT_FALSE(shape.isA(Circle::type_id()));
  EXPECT_FALSE(circle.isA(OzObject::type_id()));
}

TEST(OzDynObj, IsNotOfATypeWhoseNameHasTheSameText)
{
  Circle const circle;
  OzString const same_text("Circle");

  EXPECT_FALSE(circle.isA(&same_text));
}

TEST(OzDynObj, CastGivesTheArgumentOrNull)
{
  Circle circle;
  Shape shape;
  OzDynObj* const as_root = &circle;
  OzDynObj const* const as_const_root = &circle;

  EXPECT_EQ(Circle::cast(as_root), &circle);
  EXPECT_EQ(Shape::cast(as_root), &circle);
  EXPECT_EQ(Shape::cast(as_const_root), &circle);
  EXPECT_EQ(Circle::cast(&shape), nullptr);
  EXPECT_EQ(Circle::cast(nullptr), nullptr);
}

TEST(OzDynObj, AssigningTheRootChangesNothing)
{
  Circle circle;
  Shape const shape;
  OzDynObj& as_root = circle;

  EXPECT_EQ(&(as_root = shape), &as_root);

  EXPECT_EQ(as_root.type(), Circle::type_id());
  EXPECT_EQ(as_root.identity(), -1);
}

TEST(OzDynObj, IsDestroyedThroughTheRoot)
{
  Log log;
  {
    std::unique_ptr<OzDynObj> const attrib(new TestAttrib("a", log));
  }

  EXPECT_EQ(log, Log{"~a"});
}

TEST(OzDynObj, VirtualFunctionsStandInTheirOrder)
{
  EXPECT_EQ(vtable_slot(&OzDynObj::type), 2);
  EXPECT_EQ(vtable_slot(&OzDynObj::class_name), 3);
  EXPECT_EQ(vtable_slot(&OzDynObj::clone), 4);
  EXPECT_EQ(vtable_slot(&OzDynObj::isA), 5);
  EXPECT_EQ(vtable_slot(&OzDynObj::identity), 6);
  EXPECT_EQ(sizeof(OzDynObj), sizeof(void*));
}

TEST(OzDynObj, EveryTypeHasANameOfItsOwnAndAnAddressOfItsOwn)
{
  struct
  {
    char const* name;
    OzString const* type;
  } const types[] = {
      {"OzDynObj", OzDynObj::type_id()},
      {"OzAttrib", OzAttrib::type_id()},
      {"OzNameAttrib", OzNameAttrib::type_id()},
      {"OzExtIdAttrib", OzExtIdAttrib::type_id()},
      {"OzGMKIdAttrib", OzGMKIdAttrib::type_id()},
      {"OzDoubleAttrib", OzDoubleAttrib::type_id()},
      {"OzObject", OzObject::type_id()},
      {"OzReactor", OzReactor::type_id()},
      {"OzEvent", OzEvent::type_id()},
      {"OzObjectModified", OzObjectModified::type_id()},
      {"OzObjectDelete", OzObjectDelete::type_id()},
      {"OzReport", OzReport::type_id()},
  };

  for (auto const& a : types)
  {
    EXPECT_STREQ(a.type->as_const_c_string(), a.name);
    for (auto const& b : types)
      EXPECT_EQ(a.type == b.type, &a == &b) << a.name << " and " << b.name;
  }
}
