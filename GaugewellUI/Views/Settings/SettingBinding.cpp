#include "SettingBinding.h"

#include "SettingsPresenter.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QSignalBlocker>
#include <QSpinBox>

namespace gaugewell {

namespace {

SettingDefinition definitionOf(std::string_view key) {
    return *settingDefinition(key); // every bound key is in the table
}

} // namespace

SettingBinding::SettingBinding(QObject* control, std::shared_ptr<UserDefaults> defaults, std::string_view key,
                               std::function<void()> show)
    : QObject(control)
    , defaults(std::move(defaults))
    , key(key)
    , show(std::move(show)) {
    // Changes may arrive on any thread; the control is redrawn on its own.
    subscription = this->defaults->observe([this](const std::string& changed) {
        if (changed.empty() || changed == this->key) {
            QMetaObject::invokeMethod(
                this, [this] { this->show(); }, Qt::QueuedConnection);
        }
    });
    this->show();
}

SettingBinding* SettingBinding::toggle(QAbstractButton* control, std::shared_ptr<UserDefaults> defaults,
                                       std::string_view key) {
    control->setCheckable(true);
    const bool fallback = definitionOf(key).defaultValue == "true";
    auto* binding =
        new SettingBinding(control, defaults, key, [control, defaults, key = std::string(key), fallback] {
            const QSignalBlocker quiet(control);
            control->setChecked(defaults->storedBool(key).value_or(fallback));
        });
    QObject::connect(control, &QAbstractButton::toggled, binding,
                     [binding](bool on) { binding->defaults->set(binding->key, on); });
    return binding;
}

SettingBinding* SettingBinding::choice(QComboBox* control, std::shared_ptr<UserDefaults> defaults,
                                       std::string_view key) {
    const std::string fallback(definitionOf(key).defaultValue);
    auto* binding =
        new SettingBinding(control, defaults, key, [control, defaults, key = std::string(key), fallback] {
            const QSignalBlocker quiet(control);
            const auto stored = defaults->stringValue(key).value_or(fallback);
            control->setCurrentIndex(control->findData(QString::fromStdString(stored)));
        });
    QObject::connect(control, &QComboBox::activated, binding, [binding, control](int index) {
        binding->defaults->set(binding->key, control->itemData(index).toString().toStdString());
    });
    return binding;
}

SettingBinding* SettingBinding::minutes(QSpinBox* control, std::shared_ptr<UserDefaults> defaults,
                                        std::string_view key) {
    const auto setting = definitionOf(key);
    control->setRange(static_cast<int>(setting.minimum / 60), static_cast<int>(setting.maximum / 60));
    control->setSingleStep(static_cast<int>(setting.step / 60));
    auto* binding = new SettingBinding(control, defaults, key, [control, defaults, setting] {
        const QSignalBlocker quiet(control);
        control->setValue(SettingsPresenter::stepperMinutes(setting, defaults->doubleValue(setting.key)));
    });
    QObject::connect(control, &QSpinBox::valueChanged, binding,
                     [binding](int value) { binding->defaults->set(binding->key, double(value) * 60); });
    return binding;
}

} // namespace gaugewell
