#include "CodexAppServerTransport.h"

#include "BlockingAppServerOperation.h"

namespace gaugewell {

Expected<CodexAppServerResponse, CodexProviderError> CodexAppServerTransport::fetchUsage() const {
    BlockingAppServerOperation operation(executable_, environment_, timeoutSeconds_, outputLimit_);
    return operation.run();
}

} // namespace gaugewell
