#ifndef OZSTANDARDATTRIBS_H
#define OZSTANDARDATTRIBS_H

#include "ozattrib.h"
#include "ozexport.h"
#include "ozstring.h"

#include <cstddef>
#include <cstdint>

class OzObject;

// The four attributes that nearly every model needs. All of them belong to one object: they are not shared,
// do not go along when their object is copied, and stay valid under every event. A clone has the value and
// an identity of its own.

/// The name of an object.
class OZ_EXPORT OzNameAttrib : public OzAttrib
{
public:
  explicit OzNameAttrib(OzString const& name);
  ~OzNameAttrib() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  bool sharable() const override;
  bool propagate() const override;
  bool invariant(OzEvent const& event) const override;

  OzString const& get_name() const { return name_; }
  void set_name(OzString const& name);

  static OzNameAttrib* cast(OzDynObj* object) { return cast_to<OzNameAttrib>(object); }
  static OzNameAttrib const* cast(OzDynObj const* object) { return cast_to<OzNameAttrib const>(object); }
  static OzNameAttrib* cast(std::nullptr_t) { return nullptr; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzNameAttrib() = default;
  OzNameAttrib(OzNameAttrib const& other) = default;
  OzNameAttrib& operator=(OzNameAttrib const& other) = default;
  OzDynObj* clone() const override;

  OzString name_;
};

/// The number by which an object is known outside.
///
/// Reports: `illegal_extid_` as a number, each operation in its own way; and a second number for an object.
class OZ_EXPORT OzExtIdAttrib : public OzAttrib
{
public:
  /// No number: the answer for an object without one.
  static constexpr std::uint64_t illegal_extid_ = 0xFFFFFFFFFFFFFFFFu;

  /// An illegal number is reported and stored.
  explicit OzExtIdAttrib(std::uint64_t extid);
  ~OzExtIdAttrib() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  bool sharable() const override;
  bool propagate() const override;
  bool invariant(OzEvent const& event) const override;

  std::uint64_t get_extid() const { return extid_; }
  /// An illegal number is reported and refused, unlike that of OzGMKIdAttrib.
  void set_extid(std::uint64_t extid);

  /// The number of the newest such attribute of `object`, or `illegal_extid_`.
  static std::uint64_t get_extid_from_object(OzObject const& object);
  /// Adds an attribute to `object`, or changes its newest one, which is reported: an object is not meant to
  /// get a second number. An illegal number is reported and refused.
  static void set_extid_to_object(OzObject& object, std::uint64_t extid);

  static std::uint64_t illegal_extid() { return illegal_extid_; }
  static OzExtIdAttrib* cast(OzDynObj* object) { return cast_to<OzExtIdAttrib>(object); }
  static OzExtIdAttrib const* cast(OzDynObj const* object) { return cast_to<OzExtIdAttrib const>(object); }
  static OzExtIdAttrib* cast(std::nullptr_t) { return nullptr; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzExtIdAttrib() = default;
  OzExtIdAttrib(OzExtIdAttrib const& other) = default;
  OzExtIdAttrib& operator=(OzExtIdAttrib const& other) = default;
  OzDynObj* clone() const override;

  std::uint64_t extid_ = illegal_extid_;
};

/// The number of an object in the geometric modeller, and how it compares there.
///
/// Reports: `illegal_extid_` as a number, each operation in its own way.
class OZ_EXPORT OzGMKIdAttrib : public OzAttrib
{
public:
  /// How the object compares. Clients have values of their own; the library stores and hands them back.
  enum OzGMKCompareState : int
  {
    OzGMKCompareUnknown = 0, ///< the answer for an object without the attribute
    OzGMKCompareDefault = 1  ///< what an object gets where no state is given
  };

  /// No number: the answer for an object without one.
  static constexpr std::uint64_t illegal_extid_ = 0xFFFFFFFFFFFFFFFFu;

  /// An illegal number is reported and stored.
  OzGMKIdAttrib(std::uint64_t extid, OzGMKCompareState state);
  ~OzGMKIdAttrib() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  bool sharable() const override;
  bool propagate() const override;
  bool invariant(OzEvent const& event) const override;

  std::uint64_t get_extid() const { return extid_; }
  /// An illegal number is reported and stored, unlike that of OzExtIdAttrib.
  void set_extid(std::uint64_t extid);
  OzGMKCompareState get_compare_state() const { return compare_state_; }
  void set_compare_state(OzGMKCompareState state);

  /// The state of the newest such attribute of `object`, or OzGMKCompareUnknown.
  static OzGMKCompareState get_compare_state(OzObject const& object);
  /// The number of the newest such attribute of `object`, or `illegal_extid_`. `state` may be null; it gets
  /// what get_compare_state() answers.
  static std::uint64_t get_extid_from_object(OzObject const& object, OzGMKCompareState* state);
  /// With such an attribute on `object`, stores the number in its newest one unless it is illegal, and the
  /// state unless `state` is null; nothing is reported. Without one, adds it, with OzGMKCompareDefault if
  /// `state` is null: then an illegal number is reported twice, and stored.
  static void set_extid_to_object(OzObject& object, std::uint64_t extid, OzGMKCompareState* state);

  static std::uint64_t illegal_extid() { return illegal_extid_; }
  static OzGMKIdAttrib* cast(OzDynObj* object) { return cast_to<OzGMKIdAttrib>(object); }
  static OzGMKIdAttrib const* cast(OzDynObj const* object) { return cast_to<OzGMKIdAttrib const>(object); }
  static OzGMKIdAttrib* cast(std::nullptr_t) { return nullptr; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzGMKIdAttrib() = default;
  OzGMKIdAttrib(OzGMKIdAttrib const& other) = default;
  OzGMKIdAttrib& operator=(OzGMKIdAttrib const& other) = default;
  OzDynObj* clone() const override;

  std::uint64_t extid_ = illegal_extid_;
  OzGMKCompareState compare_state_ = OzGMKCompareUnknown;
};

/// A number with a tag that says what it means. An object may have any number of them.
class OZ_EXPORT OzDoubleAttrib : public OzAttrib
{
public:
  /// What the number means. Clients have values of their own; the library compares them for equality only.
  enum Usage : int
  {
    OzUsageDefault = 0
  };

  OzDoubleAttrib(Usage usage, double value);
  ~OzDoubleAttrib() override;

  OzString const* type() const override;
  OzString const& class_name() const override;
  bool isA(OzString const* t) const override;
  bool sharable() const override;
  bool propagate() const override;
  bool invariant(OzEvent const& event) const override;

  void get(Usage& usage, double& value) const;

  /// The newest number of `object` for `usage`. False if there is none, and `value` is 0 then.
  static bool get_value_from_object(OzObject const& object, Usage usage, double& value);
  /// Adds an attribute. An older one for the same usage stays attached, and hidden by the new one.
  static void set_value_to_object(OzObject& object, Usage usage, double value);

  static OzDoubleAttrib* cast(OzDynObj* object) { return cast_to<OzDoubleAttrib>(object); }
  static OzDoubleAttrib const* cast(OzDynObj const* object) { return cast_to<OzDoubleAttrib const>(object); }
  static OzDoubleAttrib* cast(std::nullptr_t) { return nullptr; }
  static OzString const* type_id() { return &class_name_; }

  static OzString const class_name_;

private:
  OzDoubleAttrib() = default;
  OzDoubleAttrib(OzDoubleAttrib const& other) = default;
  OzDoubleAttrib& operator=(OzDoubleAttrib const& other) = default;
  OzDynObj* clone() const override;

  Usage usage_ = OzUsageDefault;
  double value_ = 0.0;
};

#endif
