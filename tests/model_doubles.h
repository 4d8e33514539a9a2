#ifndef MODEL_DOUBLES_H
#define MODEL_DOUBLES_H

#include "ozattrib.h"
#include "ozevent.h"
#include "ozobject.h"
#include "ozreactor.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

// Objects, attributes and reactors whose rules a test chooses, and which write down what befalls them.

using Log = std::vector<std::string>;

class TestObject : public OzObject
{
public:
  TestObject() = default;
  TestObject(TestObject const& other) = default;
  /// Within reach of tests, though it is not for clients in general.
  TestObject& operator=(TestObject const& other) = default;

  OzDynObj* clone() const override { return new TestObject(*this); }
};

/// How a test double answers what an object asks it.
struct Rules
{
  bool propagate = true;
  bool sharable = true;
  bool invariant = true;
};

class TestAttrib : public OzAttrib
{
public:
  TestAttrib(std::string name, Log& log, Rules rules = Rules())
    : on_clone([](TestAttrib const& original) { return new TestAttrib(original); })
    , name_(std::move(name))
    , log_(&log)
    , rules_(rules)
  {
  }
  TestAttrib(TestAttrib const& other) = default;
  TestAttrib& operator=(TestAttrib const& other) = default;
  ~TestAttrib() override
  {
    if (on_delete)
      on_delete();
    log_->push_back("~" + name_);
  }

  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  bool isA(OzString const* t) const override { return t == &class_name_ || OzAttrib::isA(t); }
  OzDynObj* clone() const override { return on_clone(*this); }

  bool sharable() const override { return rules_.sharable; }
  bool propagate() const override { return rules_.propagate; }
  bool invariant(OzEvent const& event) const override
  {
    log_->push_back(name_ + " asked");
    if (on_event)
      on_event(event);
    return rules_.invariant;
  }

  std::string const& name() const { return name_; }
  static OzString const* type_id() { return &class_name_; }

  std::function<void(OzEvent const&)> on_event;
  std::function<void()> on_delete;
  std::function<OzDynObj*(TestAttrib const&)> on_clone;

  static inline OzString const class_name_ = "TestAttrib";

private:
  std::string name_;
  Log* log_;
  Rules rules_;
};

class TestReactor : public OzReactor
{
public:
  TestReactor(std::string name, Log& log, Rules rules = Rules())
    : on_clone([](TestReactor const& original) { return new TestReactor(original); })
    , name_(std::move(name))
    , log_(&log)
    , rules_(rules)
  {
  }
  TestReactor(TestReactor const& other) = default;
  TestReactor& operator=(TestReactor const& other) = default;
  ~TestReactor() override
  {
    if (on_delete)
      on_delete();
    log_->push_back("~" + name_);
  }

  bool sharable() const override { return rules_.sharable; }
  bool propagate() const override { return rules_.propagate; }
  void react(OzEvent const& event) override
  {
    log_->push_back(name_ + " told");
    if (on_event)
      on_event(event);
  }

  OzString const* type() const override { return &class_name_; }
  OzString const& class_name() const override { return class_name_; }
  OzDynObj* clone() const override { return on_clone(*this); }
  bool isA(OzString const* t) const override { return t == &class_name_ || OzReactor::isA(t); }

  std::string const& name() const { return name_; }
  static OzString const* type_id() { return &class_name_; }

  std::function<void(OzEvent const&)> on_event;
  std::function<void()> on_delete;
  std::function<OzDynObj*(TestReactor const&)> on_clone;

  static inline OzString const class_name_ = "TestReactor";

private:
  std::string name_;
  Log* log_;
  Rules rules_;
};

#endif
