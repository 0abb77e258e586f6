#include "LibsecretThreadSanitizerSuppressions.h"
#include "Platform/InMemorySecretStore.h"
#include "Platform/SecretStore.h"
#include "SpawnedProcess.h"
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

std::string errorName(const SecretStoreStatus& status) {
    if (!status) {
        return "none";
    }
    switch (*status) {
    case SecretStoreError::unavailable:
        return "unavailable";
    case SecretStoreError::locked:
        return "locked";
    case SecretStoreError::timedOut:
        return "timedOut";
    case SecretStoreError::failed:
        return "failed";
    }
    return "unknown";
}

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
    SecretStoreStatus status;
    if (std::string_view(mode) == "load") {
        status = store.load("app.gaugewell.probe", "primary").error;
    } else if (std::string_view(mode) == "remove") {
        status = store.remove("app.gaugewell.probe", "primary");
    } else {
        status = store.save("app.gaugewell.probe", "primary", "probe-secret");
    }
    const auto elapsed =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
            .count();
    std::printf("probe error=%s elapsed_ms=%lld\n", errorName(status).c_str(),
                static_cast<long long>(elapsed));
    std::fflush(stdout);
    std::_Exit(0);
}();

std::string uniqueService() {
    return "app.gaugewell.test." + Uuid::random().text();
}

// --- In-memory store ---

TEST(InMemorySecretStore, KeepsOneSecretPerServiceAndAccount) {
    InMemorySecretStore store;
    EXPECT_FALSE(store.save("s", "a", "one"));
    EXPECT_FALSE(store.save("s", "b", "two"));
    EXPECT_FALSE(store.save("s", "a", "three"));
    EXPECT_EQ(store.load("s", "a").secret, "three");
    EXPECT_EQ(store.load("s", "b").secret, "two");
    EXPECT_EQ(store.itemCount(), 2u);
}

TEST(InMemorySecretStore, InjectedFailureLeavesItemsUntouched) {
    InMemorySecretStore store;
    ASSERT_FALSE(store.save("s", "a", "kept"));
    store.setFailure(SecretStoreError::locked);
    EXPECT_EQ(store.save("s", "a", "other"), SecretStoreError::locked);
    EXPECT_EQ(store.remove("s", "a"), SecretStoreError::locked);
    EXPECT_EQ(store.load("s", "a").error, SecretStoreError::locked);
    store.setFailure(std::nullopt);
    EXPECT_EQ(store.load("s", "a").secret, "kept");
}

// --- The session's Secret Service (an unlocked gnome-keyring started by scripts/test-session.sh) ---

class SessionKeyring : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(std::getenv("DBUS_SESSION_BUS_ADDRESS"), nullptr)
            << "run this suite through scripts/test-session.sh, which provides a private bus and keyring";
    }
    void TearDown() override { store.remove(service, "primary"); }

    LibsecretSecretStore store;
    const std::string service = uniqueService();
};

TEST_F(SessionKeyring, LoadOfNothingIsAbsentWithoutError) {
    const auto loaded = store.load(service, "primary");
    EXPECT_EQ(errorName(loaded.error), "none");
    EXPECT_FALSE(loaded.secret.has_value());
}

TEST_F(SessionKeyring, RemoveOfNothingSucceeds) {
    EXPECT_EQ(errorName(store.remove(service, "primary")), "none");
}

TEST_F(SessionKeyring, SavingTwiceReplacesTheItem) {
    ASSERT_EQ(errorName(store.save(service, "primary", "first")), "none");
    ASSERT_EQ(errorName(store.save(service, "primary", "second")), "none");
    EXPECT_EQ(store.load(service, "primary").secret, "second");
    // One item only: after one removal nothing is left.
    ASSERT_EQ(errorName(store.remove(service, "primary")), "none");
    EXPECT_FALSE(store.load(service, "primary").secret.has_value());
}

TEST_F(SessionKeyring, AccountsAndServicesAreSeparateItems) {
    ASSERT_EQ(errorName(store.save(service, "primary", "p")), "none");
    ASSERT_EQ(errorName(store.save(service, "secondary", "s")), "none");
    EXPECT_EQ(store.load(service, "primary").secret, "p");
    EXPECT_EQ(store.load(service, "secondary").secret, "s");
    EXPECT_FALSE(store.load(uniqueService(), "primary").secret.has_value());
    store.remove(service, "secondary");
}

TEST_F(SessionKeyring, KeepsJsonAndNonAsciiTextExactly) {
    const std::string secret = R"({"accessToken":"a\"b","scopes":["x y"],"note":"Grüße ✓"})";
    ASSERT_EQ(errorName(store.save(service, "primary", secret)), "none");
    EXPECT_EQ(store.load(service, "primary").secret, secret);
}

// --- Buses without a working Secret Service, each in a probe process of its own ---

struct ProbeOutcome {
    std::string error;
    long long elapsedMilliseconds = -1;
};

class IsolatedBus : public ::testing::Test {
protected:
    void SetUp() override {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base ? base : "/tmp") + "/gaugewell-bus.XXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder = pattern;
        // A session bus that knows no services at all: nothing can be activated on it.
        std::ofstream(folder / "bus.conf")
            << R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=)"
            << folder.string() << R"(</listen>
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

    void TearDown() override { std::filesystem::remove_all(folder); }

    ProbeOutcome runProbe(const std::string& mode, bool withSilentService, int deadlineMilliseconds) {
        const auto self = std::filesystem::read_symlink("/proc/self/exe").string();
        const std::string script =
            withSilentService
                ? "/usr/bin/python3 \"$GAUGEWELL_SILENT_SERVICE\" & "
                  "gdbus wait --session --timeout 20 org.freedesktop.secrets || exit 3; exec \"$1\""
                : "exec \"$1\"";
        auto process = testing::SpawnedProcess::start(
            {"/usr/bin/dbus-run-session", "--config-file=" + (folder / "bus.conf").string(), "--", "/bin/sh",
             "-c", script, "probe", self},
            {{"GAUGEWELL_SECRET_STORE_PROBE", mode},
             {"GAUGEWELL_SECRET_STORE_DEADLINE_MS", std::to_string(deadlineMilliseconds)},
             {"GAUGEWELL_SILENT_SERVICE", (folder / "silent-secret-service.py").string()},
             {"DBUS_SESSION_BUS_ADDRESS", std::nullopt}},
            testing::SpawnedProcess::Output::capture);
        if (!process) {
            ADD_FAILURE() << "cannot start dbus-run-session";
            return {};
        }
        const auto outcome = process->waitForExit(60s);
        std::smatch match;
        static const std::regex line(R"(probe error=(\w+) elapsed_ms=(\d+))");
        if (outcome.timedOut || !std::regex_search(outcome.output, match, line)) {
            ADD_FAILURE() << "the probe did not report (timed out: " << outcome.timedOut << ")";
            return {};
        }
        return {match[1].str(), std::stoll(match[2].str())};
    }

    std::filesystem::path folder;
};

TEST_F(IsolatedBus, NoSecretServiceFailsQuicklyAsUnavailable) {
    for (const std::string mode : {"save", "load", "remove"}) {
        const auto outcome = runProbe(mode, false, 5000);
        EXPECT_EQ(outcome.error, "unavailable") << mode;
        EXPECT_GE(outcome.elapsedMilliseconds, 0) << mode;
        EXPECT_LT(outcome.elapsedMilliseconds, 2000) << mode;
    }
}

TEST_F(IsolatedBus, ServiceThatNeverAnswersIsCutOffAtTheDeadline) {
    const auto outcome = runProbe("save", true, 700);
    EXPECT_EQ(outcome.error, "timedOut");
    EXPECT_GE(outcome.elapsedMilliseconds, 650);
    EXPECT_LT(outcome.elapsedMilliseconds, 5000);
}

} // namespace
} // namespace gaugewell
