#pragma once

namespace gaugewell {

// curl_global_init is not safe to race with itself or with other curl calls on older libcurl
// versions; every user of libcurl in this module goes through here first.
void ensureCurlGlobalInit();

} // namespace gaugewell
