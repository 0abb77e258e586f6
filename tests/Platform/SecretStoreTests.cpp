#include "Platform/SecretStore.h"
#include "ProviderKit/Process/PosixCommandRunner.h"
#include "TemporaryDirectory.h"
#include "UsageDomain/Uuid.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <unistd.h>

namespace gaugewell {
namespace {

using namespace std::chrono_literals;

// Started as a probe (by the tests below, under a bus of their own), this binary makes one secret-store
// call, prints its outcome and exits before any test runs. The GDBus session connection is one per
// process, so a different bus needs a different process.
[[maybe_unused]] const bool probeMode = [] {
    const char* mode = std::getenv("GAUGEWELL_SECRET_STORE_PROBE");
    if (mode == nullptr) {
        return false;
    }
    const char* deadlineText = std::getenv("GAUGEWELL_SECRET_STORE_DEADLINE_MS");
    LibsecretSecretStore store(std::chrono::milliseconds(deadlineText ? std::atoll(deadlineText) : 5000));
    const auto start = std::chrono::steady_clock::now();
    Status<SecretStoreError> status;
    if (std::string_view(mode) == "load") {
        const auto loaded = store.load("app.gaugewell.probe", "primary");
        status = loaded ? Status<SecretStoreError>() : unexpected(loaded.error());
    } else if (std::string_view(mode) == "remove") {
        status = store.remove("app.gaugewell.probe", "primary");
    } else {
        status = store.save("app.gaugewell.probe", "primary", "probe-secret");
    }
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    std::printf("probe error=%d elapsed_ms=%lld\n", status ? -1 : static_cast<int>(status.error()),
                static_cast<long long>(elapsed.count()));
    std::fflush(stdout);
    std::_Exit(0);
}();

std::string uniqueService() {
    return "app.gaugewell.test." + Uuid::random().text();
}

// --- The session's Secret Service (an unlocked gnome-keyring started by scripts/test-session.sh) ---

class SessionKeyring : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr)
            << "run this suite through scripts/test-session.sh, which provides a private bus and keyring";
    }
    void TearDown() override {
        (void)store.remove(service, "primary");
        (void)store.remove(service, "secondary");
    }

    LibsecretSecretStore store;
    const std::string service = uniqueService();
};

TEST_F(SessionKeyring, NothingStoredLoadsAbsentAndRemovesWithoutError) {
    EXPECT_EQ(store.load(service, "primary").value(), std::nullopt);
    EXPECT_TRUE(store.remove(service, "primary"));
}

TEST_F(SessionKeyring, KeepsOneExactSecretPerServiceAndAccount) {
    const std::string secret = R"({"accessToken":"a\"b","scopes":["x y"],"note":"Grüße ✓"})";
    ASSERT_TRUE(store.save(service, "primary", "first"));
    ASSERT_TRUE(store.save(service, "primary", secret));
    ASSERT_TRUE(store.save(service, "secondary", "s"));
    EXPECT_EQ(store.load(service, "primary").value(), secret);
    EXPECT_EQ(store.load(service, "secondary").value(), "s");
    EXPECT_EQ(store.load(uniqueService(), "primary").value(), std::nullopt);
    // Saving twice replaced the item: after one removal nothing is left.
    ASSERT_TRUE(store.remove(service, "primary"));
    EXPECT_EQ(store.load(service, "primary").value(), std::nullopt);
}

// --- Buses without a working Secret Service, each in a probe process of its own ---

struct ProbeOutcome {
    int error = -2; // the SecretStoreError, -1 for success
    long long elapsedMilliseconds = -1;
};

class IsolatedBus : public ::testing::Test {
protected:
    void SetUp() override {
        // A session bus that knows no services at all: nothing can be activated on it.
        std::ofstream(folder / "bus.conf") << R"(<busconfig>
  <type>session</type>
  <listen>unix:dir=)" << folder.path().string()
                                           << R"(</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";
        // Owns the Secret Service name and swallows every call without ever answering: what a keyring
        // waiting behind an unanswered unlock prompt looks like to its clients.
        std::ofstream(folder / "silent-secret-service.py") << R"(
import dbus, dbus.lowlevel, dbus.mainloop.glib
from gi.repository import GLib
dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
def swallow(connection, message):
    if message.get_type() == dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL:
        return dbus.lowlevel.HANDLER_RESULT_HANDLED
    return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
bus.add_message_filter(swallow)
bus.request_name("org.freedesktop.secrets")
GLib.MainLoop().run()
)";
    }

    ProbeOutcome runProbe(const std::string& mode, bool withSilentService, int deadlineMilliseconds) {
        const auto self = std::filesystem::read_symlink("/proc/self/exe").string();
        const std::string script =
            withSilentService
                ? "/usr/bin/python3 \"$GAUGEWELL_SILENT_SERVICE\" & "
                  "gdbus wait --session --timeout 20 org.freedesktop.secrets || exit 3; exec \"$1\""
                : "exec \"$1\"";
        auto environment = currentProcessEnvironment();
        environment.erase("DBUS_SESSION_BUS_ADDRESS");
        environment["GAUGEWELL_SECRET_STORE_PROBE"] = mode;
        environment["GAUGEWELL_SECRET_STORE_DEADLINE_MS"] = std::to_string(deadlineMilliseconds);
        environment["GAUGEWELL_SILENT_SERVICE"] = (folder / "silent-secret-service.py").string();
        const auto outcome = PosixCommandRunner().run(
            "/usr/bin/dbus-run-session",
            {"--config-file=" + (folder / "bus.conf").string(), "--", "/bin/sh", "-c", script, "probe", self},
            environment, 60s, 1 << 16);
        std::smatch match;
        static const std::regex line(R"(probe error=(-?\d+) elapsed_ms=(\d+))");
        const std::string output = outcome ? outcome->standardOutput + outcome->standardError : "";
        if (!std::regex_search(output, match, line)) {
            ADD_FAILURE() << "the probe did not report";
            return {};
        }
        return {std::stoi(match[1].str()), std::stoll(match[2].str())};
    }

    testing::TemporaryDirectory folder;
};

TEST_F(IsolatedBus, NoSecretServiceFailsQuicklyAsUnavailable) {
    for (const std::string mode : {"save", "load", "remove"}) {
        const auto outcome = runProbe(mode, false, 5000);
        EXPECT_EQ(outcome.error, static_cast<int>(SecretStoreError::unavailable)) << mode;
        EXPECT_GE(outcome.elapsedMilliseconds, 0) << mode;
        EXPECT_LT(outcome.elapsedMilliseconds, 2000) << mode;
    }
}

TEST_F(IsolatedBus, ServiceThatNeverAnswersIsCutOffAtTheDeadline) {
    const auto outcome = runProbe("save", true, 700);
    EXPECT_EQ(outcome.error, static_cast<int>(SecretStoreError::timedOut));
    EXPECT_GE(outcome.elapsedMilliseconds, 650);
    EXPECT_LT(outcome.elapsedMilliseconds, 5000);
}

} // namespace
} // namespace gaugewell
