#pragma once

#include <functional>

/// The only place where the program runs its event loop from inside a slot. Whoever calls this can be entered
/// again and may find objects gone on return: hold what is needed afterwards by QPointer.
namespace Waits {

/// Handles events for `ms` milliseconds, asleep while there are none. At most about 5 ms late.
void pump(int ms);

enum class UserEvents
{
    Now,
    Later ///< keys and mouse stay in the queue
};

/// Handles what is already waiting, without sleeping.
void pumpPending(UserEvents userEvents = UserEvents::Now);

/// Does `work` on a thread of its own and handles events until it is done; keys and mouse stay in the queue.
void whileWorking(const std::function<void()>& work);

} // namespace Waits
