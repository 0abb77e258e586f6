#include "OnboardingView.h"

#include "GaugewellUI/Model/UsageAppModel.h"
#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionBadge.h"
#include "GaugewellUI/Views/Connections/ProviderConnectionButton.h"
#include "GaugewellUI/Views/DesignSystem/GlassSurface.h"
#include "GaugewellUI/Views/DesignSystem/ProviderMark.h"
#include "GaugewellUI/Views/DesignSystem/SymbolButton.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace gaugewell {

QString onboardingStatusLine(int connectedAccounts) {
    if (connectedAccounts >= 2) {
        return Localizable::tr("Both accounts connected");
    }
    if (connectedAccounts == 1) {
        return Localizable::tr("1 account connected");
    }
    return Localizable::tr("You can finish without connecting");
}

namespace {

QWidget* featureTile(const char* symbol, const QString& title, const QString& text, QWidget* parent) {
    auto* tile = new GlassSurface(parent, 12);
    tile->setAccessibleName(title);
    // Equal widths whatever the text: the layout shares the row by stretch alone.
    tile->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    auto* layout = new QVBoxLayout(tile);
    layout->setContentsMargins(14, 12, 14, 12);
    layout->setSpacing(6);
    layout->addWidget(new SymbolLabel(symbol, 22, tile));
    layout->addWidget(makeLabel(title, TextStyle::headline, tile));
    auto* body = makeLabel(text, TextStyle::callout, tile);
    body->setWordWrap(true);
    makeSecondary(body);
    layout->addWidget(body);
    layout->addStretch();
    return tile;
}

QWidget* serviceRow(UsageAppModel& model, ProviderService service, const QString& explanation,
                    QWidget* parent) {
    auto* row = new GlassSurface(parent, 12);
    row->setObjectName(QStringLiteral("onboarding-%1").arg(QString::fromUtf8(rawValue(service))));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(14, 10, 14, 10);
    layout->setSpacing(12);
    layout->addWidget(new ProviderMark(service, 26, row));
    auto* texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addWidget(makeLabel(QString::fromUtf8(displayName(service)), TextStyle::headline, row));
    auto* detail = makeLabel(explanation, TextStyle::caption, row);
    detail->setWordWrap(true);
    makeSecondary(detail);
    texts->addWidget(detail);
    texts->addWidget(new ProviderConnectionBadge(model, service, row));
    layout->addLayout(texts, 1);
    layout->addWidget(new ProviderConnectionButton(model, service, true, row));
    return row;
}

} // namespace

OnboardingView::OnboardingView(UsageAppModel& model, std::function<void()> onComplete, QWidget* parent)
    : QWidget(parent)
    , model(model)
    , onComplete(std::move(onComplete))
    , steps(new QStackedWidget(this))
    , status(makeLabel(QString(), TextStyle::callout, this)) {
    setObjectName(QStringLiteral("onboarding"));

    auto* welcome = new QWidget(steps);
    auto* first = new QVBoxLayout(welcome);
    first->setContentsMargins(36, 32, 36, 28);
    first->setSpacing(10);
    auto* icon = new QLabel(welcome);
    icon->setPixmap(QIcon(QStringLiteral(":/app/app.gaugewell.Gaugewell.svg")).pixmap(64, 64));
    first->addWidget(icon, 0, Qt::AlignHCenter);
    auto* headline =
        makeLabel(Localizable::tr("Your AI limits, at a glance"), TextStyle::largeTitle, welcome);
    first->addWidget(headline, 0, Qt::AlignHCenter);
    auto* intro =
        makeLabel(Localizable::tr("Gaugewell reads the current limits reported by your\nCodex and Claude "
                                  "accounts and keeps them in memory only."),
                  TextStyle::body, welcome);
    intro->setAlignment(Qt::AlignHCenter);
    makeSecondary(intro);
    first->addWidget(intro, 0, Qt::AlignHCenter);
    first->addSpacing(12);
    auto* tiles = new QHBoxLayout;
    tiles->setSpacing(10);
    tiles->addWidget(
        featureTile("gauge.with.dots.needle.67percent", Localizable::tr("Live limits"),
                    Localizable::tr("Session and weekly allowances as each service reports them."), welcome),
        1);
    tiles->addWidget(featureTile("clock", Localizable::tr("Reset times"),
                                 Localizable::tr("When each window starts over, in your clock format."),
                                 welcome),
                     1);
    tiles->addWidget(featureTile("internaldrive.badge.xmark", Localizable::tr("No usage cache"),
                                 Localizable::tr("Nothing collected is written to disk."), welcome),
                     1);
    first->addLayout(tiles);
    first->addStretch();
    auto* firstButtons = new QHBoxLayout;
    auto* notNow = new QPushButton(Localizable::tr("Not now"), welcome);
    notNow->setObjectName(QStringLiteral("not-now"));
    notNow->setAccessibleName(notNow->text());
    auto* next = new QPushButton(Localizable::tr("Continue"), welcome);
    next->setObjectName(QStringLiteral("continue"));
    next->setAccessibleName(next->text());
    next->setDefault(true);
    firstButtons->addStretch();
    firstButtons->addWidget(notNow);
    firstButtons->addWidget(next);
    first->addLayout(firstButtons);
    connect(notNow, &QPushButton::clicked, this, [this] { this->onComplete(); });
    connect(next, &QPushButton::clicked, this, [this] { setStep(2); });

    auto* accounts = new QWidget(steps);
    auto* second = new QVBoxLayout(accounts);
    second->setContentsMargins(36, 24, 36, 28);
    second->setSpacing(10);
    auto* top = new QHBoxLayout;
    auto* back = new SymbolButton("chevron.left", Localizable::tr("Back"), accounts);
    back->setObjectName(QStringLiteral("back"));
    connect(back, &QToolButton::clicked, this, [this] { setStep(1); });
    top->addWidget(back);
    top->addStretch();
    auto* marker = makeLabel(Localizable::tr("2 of 2"), TextStyle::caption, accounts);
    makeSecondary(marker);
    top->addWidget(marker);
    second->addLayout(top);
    second->addWidget(makeLabel(Localizable::tr("Connect your accounts"), TextStyle::largeTitle, accounts));
    auto* explanation = makeLabel(Localizable::tr("Each service opens its own official sign-in flow."),
                                  TextStyle::body, accounts);
    makeSecondary(explanation);
    second->addWidget(explanation);
    second->addSpacing(6);
    second->addWidget(serviceRow(
        model, ProviderService::codex,
        Localizable::tr("Uses Codex's managed ChatGPT session and account app-server."), accounts));
    second->addWidget(serviceRow(
        model, ProviderService::claude,
        Localizable::tr("Uses browser OAuth; the resulting token stays in your keyring."), accounts));
    auto* statusRow = new QHBoxLayout;
    statusRow->setSpacing(6);
    statusRow->addWidget(new SymbolLabel("checkmark.shield", 16, accounts));
    status->setObjectName(QStringLiteral("onboarding-status"));
    statusRow->addWidget(status, 1);
    second->addLayout(statusRow);
    second->addStretch();
    auto* note = makeLabel(Localizable::tr("Usage responses are never written to disk. You can connect or "
                                           "disconnect later in Settings."),
                           TextStyle::caption, accounts);
    note->setWordWrap(true);
    makeSecondary(note);
    second->addWidget(note);
    auto* finishRow = new QHBoxLayout;
    auto* finish = new QPushButton(Localizable::tr("Finish"), accounts);
    finish->setObjectName(QStringLiteral("finish"));
    finish->setAccessibleName(finish->text());
    finish->setDefault(true);
    finishRow->addStretch();
    finishRow->addWidget(finish);
    second->addLayout(finishRow);
    connect(finish, &QPushButton::clicked, this, [this] { this->onComplete(); });

    steps->addWidget(welcome);
    steps->addWidget(accounts);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(steps);
    connect(&model, &UsageAppModel::connectionStatesChanged, this, &OnboardingView::refreshStatus);
    refreshStatus();
}

int OnboardingView::step() const {
    return steps->currentIndex() + 1;
}

void OnboardingView::setStep(int step) {
    steps->setCurrentIndex(step == 2 ? 1 : 0);
}

void OnboardingView::refreshStatus() {
    int connected = 0;
    for (const auto service : allProviderServices) {
        connected += model.connectionState(service).isAuthenticated() ? 1 : 0;
    }
    status->setText(onboardingStatusLine(connected));
    status->setAccessibleName(status->text());
}

} // namespace gaugewell
