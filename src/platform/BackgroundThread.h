// Threads whose work nobody looks at while it is done.
#pragma once

namespace kelvaro {

// From now on the calling thread gets a tenth of the processor time of others where both want it:
// for long work in the background. There is no way back; without effect where the system refuses.
void runThisThreadInBackground();

} // namespace kelvaro
