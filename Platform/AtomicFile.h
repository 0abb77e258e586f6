#pragma once

#include "UsageDomain/Expected.h"

#include <filesystem>
#include <string_view>
#include <sys/types.h>
#include <system_error>

namespace gaugewell {

// Replaces `destination` with `contents` so that readers see the old file or the new one, never a
// mix: a uniquely named temporary in the same folder, synced, then renamed over it, and the folder
// synced. On failure nothing is left behind and an existing file is untouched. Blocks on the file
// system. Fails with the errno of the step that failed.
Status<std::errc> replaceFileAtomically(const std::filesystem::path& destination, std::string_view contents,
                                        mode_t mode);

} // namespace gaugewell
