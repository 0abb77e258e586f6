#pragma once

#include "GaugewellUI/Model/UsageAppModel.h"
#include "ModelFakes.h"
#include "Platform/InMemoryUserDefaults.h"
#include "ViewStateFixtures.h"

#include <QApplication>
#include <QTest>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>

// Readable failures: GoogleTest prints a QString as its text.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

// Compiled into a static library: registered by name.
inline void registerViewResources() {
    Q_INIT_RESOURCE(resources);
}

namespace gaugewell::testing {

// One widget application for the whole test process (Qt allows one), on the offscreen platform.
inline QApplication& widgetApplication() {
    static QApplication* application = [] {
        static int argc = 1;
        static char name[] = "GaugewellViewsTests";
        static char* argv[] = {name, nullptr};
        // Texts and times as an en_US user in UTC sees them.
        ::setenv("LANG", "en_US.UTF-8", 1);
        ::setenv("TZ", "UTC", 1);
        auto* app = new QApplication(argc, argv);
        registerViewResources();
        return app;
    }();
    return *application;
}

// A model over the fakes above, as the windows see one.
struct ModelFixture {
    std::shared_ptr<SettableAuthentication> authentication = std::make_shared<SettableAuthentication>();
    std::shared_ptr<FixedCollector> codex = std::make_shared<FixedCollector>(ProviderService::codex);
    std::shared_ptr<FixedCollector> claude = std::make_shared<FixedCollector>(ProviderService::claude);
    std::shared_ptr<InMemoryUserDefaults> defaults = std::make_shared<InMemoryUserDefaults>();
    Date now = referencePlus(5000);
    std::unique_ptr<UsageAppModel> model;

    ModelFixture() {
        widgetApplication();
        model = std::make_unique<UsageAppModel>(UsageAppModel::Dependencies{
            authentication, {codex, claude}, defaults, {}, [this] { return now; }});
    }

    // A refresh still running would continue on a model that is gone.
    ~ModelFixture() {
        (void)QTest::qWaitFor([this] { return !model->isRefreshing(); }, 10000);
    }

    void refresh() {
        bool done = false;
        model->refresh(RefreshTrigger::manual).then(model.get(), [&done] { done = true; });
        ASSERT_TRUE(QTest::qWaitFor([&] { return done; }, 10000));
    }
};

} // namespace gaugewell::testing
