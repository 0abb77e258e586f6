#pragma once

namespace gaugewell {

// `gaugewell` without a command: the tray application, or, when one already runs in this
// session, a request that it show itself. Returns the process's exit status.
int runTrayApplication(int argc, char** argv);

} // namespace gaugewell
