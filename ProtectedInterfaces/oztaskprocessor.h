#ifndef OZTASKPROCESSOR_H
#define OZTASKPROCESSOR_H

#include "ozarray.h"
#include "ozexport.h"
#include "ozmap.h"

#include <cstdint>

class LumThreads;
class OzTaskProcessor;

/// What a processor tells when it ends: that the value kept for it can go.
class OZ_EXPORT OzReleaseTaskProcessorLocal
{
public:
  OzReleaseTaskProcessorLocal() = default;
  OzReleaseTaskProcessorLocal(OzReleaseTaskProcessorLocal const&) = default;
  OzReleaseTaskProcessorLocal& operator=(OzReleaseTaskProcessorLocal const&) = default;
  virtual ~OzReleaseTaskProcessorLocal();

  virtual void Release(OzTaskProcessor* processor) = 0;
};

/// A worker thread as the library sees it: something with a number of its own that is bound to a thread
/// while that thread runs tasks. The main thread and all threads that nobody bound have no processor.
///
/// A thread binds itself by AddProcessor when it starts to work, and ends with ReleaseProcessorLocals and
/// RemoveProcessor. So the values kept for a processor die with its thread, not with the processor object.
///
/// Ownership: processors belong to whoever made them; the table of processors refers to them.
/// Threads: the table and the numbers are guarded by the global lock. What a processor waits for, and its
/// list of locals, are for its own thread.
class OZ_EXPORT OzTaskProcessor
{
public:
  OzTaskProcessor();
  /// A copy has the same number.
  OzTaskProcessor(OzTaskProcessor const&) = default;
  OzTaskProcessor& operator=(OzTaskProcessor const&) = default;
  /// Releases the locals.
  virtual ~OzTaskProcessor();

  /// Unique in the process; the first is 1. The library's own workers take 1 to 64 at load.
  std::uint64_t Id() const { return id_; }

  // Published for clients who look for deadlocks. The library calls neither.
  void WaitFor(void* something) { waits_for_ = something; }
  void* WaitsFor() const { return waits_for_; }

  /// The calling thread's processor; null on the main thread and on a thread without one.
  /// Cost: no lock on the main thread, the global lock elsewhere.
  static OzTaskProcessor* TaskProcessor();

  /// Notes that `local` holds a value for this processor. Called once for each value.
  void RecordProcessorLocal(OzReleaseTaskProcessorLocal* local);

  static std::uint64_t Id_; // the last number drawn; guarded by dkb_critical_mutex

protected:
  /// Binds the calling thread to `processor`.
  static void AddProcessor(OzTaskProcessor* processor);
  /// Unbinds the calling thread, from whatever processor it is bound to: `processor` is not looked at.
  static void RemoveProcessor(OzTaskProcessor* processor);
  /// Has each value that is kept for this processor released, in the order of their first use.
  void ReleaseProcessorLocals();

private:
  void* waits_for_ = nullptr;
  std::uint64_t id_;
  OzArray<OzReleaseTaskProcessorLocal*> locals_; // not owned

  static OzMap<LumThreads*, OzTaskProcessor*>& processor_map; // guarded by dkb_critical_mutex
};

/// A variable of which each processor has a value of its own, made at its first use and freed when the
/// processor's thread ends. The main thread, and all threads without a processor, share one value.
///
/// It lives as long as threads may use it: usually it is static and never destroyed.
/// Threads: Value() may be called on any thread; what it hands out belongs to the calling thread. The value
/// shared by threads without a processor is not guarded.
/// Cost: no lock on the main thread; elsewhere the global lock, twice, and a search.
template <class T>
class OZ_EXPORT OzTaskProcessorDkbLocal : public OzReleaseTaskProcessorLocal
{
public:
  /// `initializer` is run on each new value, if it is not null.
  explicit OzTaskProcessorDkbLocal(void (*initializer)(T*) = nullptr);
  OzTaskProcessorDkbLocal(OzTaskProcessorDkbLocal const&) = delete;
  OzTaskProcessorDkbLocal& operator=(OzTaskProcessorDkbLocal const&) = delete;
  /// Values of processors that have not ended are not freed.
  ~OzTaskProcessorDkbLocal() override;

  /// The calling thread's value; null if there is no memory for it.
  T* Value();
  void Release(OzTaskProcessor* processor) override;

protected:
  std::uint64_t peak_count_ = 0;       // the most entries that values_ ever had
  OzMap<OzTaskProcessor*, T*> values_; // owned; guarded by dkb_critical_mutex
  void (*initializer_)(T*);
  T main_value_; // of all threads without a processor
};

#include "oztaskprocessor_t.h"

#endif
