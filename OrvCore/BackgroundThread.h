#pragma once

namespace orv {

/// Lets other threads, such as the one that draws, come before this one and those that it starts. For good: a thread
/// may not raise itself again, so it is for threads that do nothing else. Any thread but the main one.
void becomeBackgroundThread();

} // namespace orv
