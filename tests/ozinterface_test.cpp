#include "ozinterface.h"

#include "vtable_slot.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// An interface of a client's own: it answers its own id and passes on what it does not know.
class Drawable : public OzInterface
{
public:
  OzInterface* query_interface(OzString const* id) const override
  {
    return id == &class_name_ ? const_cast<Drawable*>(this) : OzInterface::query_interface(id);
  }
  static OzString const* interface_id() { return &class_name_; }
  static inline OzString const class_name_ = "Drawable";
};
} // namespace

TEST(OzInterface, IsIdentifiedByTheAddressOfItsName)
{
  EXPECT_STREQ(OzInterface::class_name_.as_const_c_string(), "OzInterface");
  EXPECT_EQ(OzInterface::interface_id(), &OzInterface::class_name_);
}

TEST(OzInterface, AnswersItselfForItsOwnIdAndNullForAnyOther)
{
  OzInterface const interface;
  OzString const same_text("OzInterface");

  EXPECT_EQ(interface.query_interface(OzInterface::interface_id()), &interface);
  EXPECT_EQ(interface.query_interface(&same_text), nullptr);
  EXPECT_EQ(interface.query_interface(Drawable::interface_id()), nullptr);
  EXPECT_EQ(interface.query_interface(nullptr), nullptr);
}

TEST(OzInterface, ADerivedOneAnswersBothIds)
{
  std::unique_ptr<OzInterface> const drawable(new Drawable);

  EXPECT_EQ(drawable->query_interface(Drawable::interface_id()), drawable.get());
  EXPECT_EQ(drawable->query_interface(OzInterface::interface_id()), drawable.get());
  EXPECT_EQ(drawable->query_interface(nullptr), nullptr);
}

TEST(OzInterface, HasItsQueryBehindTheDestructorAndNoFields)
{
  EXPECT_EQ(vtable_slot(&OzInterface::query_interface), 2);
  EXPECT_EQ(sizeof(OzInterface), sizeof(void*));
}
