// Where a new thread begins: on another processor than its creator's.
//
// The halves of a fork are often shorter than a tick of the scheduler. A kernel that puts the new thread on
// the creator's processor, where it waits for the creator to block or for the next tick, turns them into one
// after the other, however idle the other processors are. So a thread that shall run beside its creator is
// created with that processor taken out of its mask, and takes the whole mask back as its first action: from
// then on the scheduler moves it as it likes.
//
// Where this cannot work (one processor, more processors than the mask of the C library holds, a mask that
// the system refuses) a thread begins where the scheduler puts it. Cost: two system calls a thread.
#pragma once

#include <pthread.h>
#include <sched.h>

namespace znp {

// Attributes for a thread that is about to be created by this one. Null: the default ones.
class PlacedElsewhere {
  public:
    PlacedElsewhere();
    PlacedElsewhere(const PlacedElsewhere&) = delete;
    PlacedElsewhere& operator=(const PlacedElsewhere&) = delete;
    ~PlacedElsewhere();
    const pthread_attr_t* attributes() const { return placed_ ? &attributes_ : nullptr; }
    // The creator's processors, for the new thread to take back.
    const cpu_set_t& processors() const { return processors_; }

  private:
    cpu_set_t processors_;
    pthread_attr_t attributes_;
    bool initialised_ = false;
    bool placed_ = false;
};

// For the new thread.
void take_processors(const cpu_set_t& processors);

}  // namespace znp
