#include "ui/settings/SettingEditors.h"

#include "core/app/Translate.h"
#include "core/fs/Applications.h"
#include "core/model/PXFile.h"
#include "core/settings/ObservableSettings.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QIcon>
#include <QMetaProperty>
#include <QPainter>
#include <QPen>
#include <QPixmap>
#include <QPointer>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace {

constexpr Translator tr("SettingEditors");

QMetaProperty propertyOf(const QObject *settings, const char *name)
{
    const QMetaObject *type = settings->metaObject();
    return type->property(type->indexOfProperty(name));
}

// The value set of an enumeration property; invalid for other types.
QMetaEnum valueSetOf(QMetaType type)
{
    const QMetaObject *scope = type.metaObject();
    if (!(type.flags() & QMetaType::IsEnumeration) || !scope)
        return {};
    const QByteArray name = QByteArray(type.name()).split(':').last();
    const int index = scope->indexOfEnumerator(name.constData());
    return index < 0 ? QMetaEnum() : scope->enumerator(index);
}

int rawValue(const QVariant &value)
{
    return *static_cast<const int *>(value.constData());
}

QIcon swatch(const QColor &color, int size)
{
    QPixmap pixmap(size * 2, size);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(128, 128, 128), 1));
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(0.5, 0.5, size * 2 - 1, size - 1), 3, 3);
    return QIcon(pixmap);
}

// Keeps `editor` in step with the property: shows its value now and after every change of the
// settings object, and enables it by the row's condition.
void follow(QObject *settings, const SettingRow &row, QWidget *editor, std::function<void(const QVariant &)> show)
{
    const QMetaProperty property = propertyOf(settings, row.property);
    const QMetaProperty condition = row.enabledBy ? propertyOf(settings, row.enabledBy) : QMetaProperty();
    const int enabledValue = row.enabledValue;
    const auto refresh = [settings, property, condition, enabledValue, editor, show] {
        const QSignalBlocker quiet(editor);
        show(property.read(settings));
        if (condition.isValid()) {
            const QVariant value = condition.read(settings);
            const int current = value.metaType() == QMetaType::fromType<bool>() ? int(value.toBool()) : rawValue(value);
            editor->setEnabled(current == enabledValue);
        }
    };
    refresh();
    // Any field of the object: the editor's own and the one its condition reads.
    if (auto *observable = qobject_cast<ObservableSettings *>(settings))
        QObject::connect(observable, &ObservableSettings::changed, editor, refresh);
}

QWidget *checkBox(QObject *settings, const SettingRow &row, const QMetaProperty &property, QWidget *parent)
{
    auto *box = new QCheckBox(row.translatedLabel(), parent);
    follow(settings, row, box, [box](const QVariant &value) { box->setChecked(value.toBool()); });
    const QPointer<QObject> target(settings);
    QObject::connect(box, &QCheckBox::toggled, box, [target, property](bool on) {
        if (target)
            property.write(target, on);
    });
    return box;
}

QWidget *integerBox(QObject *settings, const SettingRow &row, const QMetaProperty &property, QWidget *parent)
{
    auto *box = new QSpinBox(parent);
    box->setRange(int(row.minimum), int(row.maximum));
    box->setSingleStep(int(std::max(1.0, row.step)));
    box->setSuffix(row.translatedSuffix());
    // Only a different value is shown: setting the same one would disturb the user's typing.
    follow(settings, row, box, [box](const QVariant &value) {
        if (box->value() != value.toInt())
            box->setValue(value.toInt());
    });
    const QPointer<QObject> target(settings);
    QObject::connect(box, &QSpinBox::valueChanged, box, [target, property](int value) {
        if (target)
            property.write(target, value);
    });
    return box;
}

QWidget *numberBox(QObject *settings, const SettingRow &row, const QMetaProperty &property, QWidget *parent)
{
    auto *box = new QDoubleSpinBox(parent);
    box->setDecimals(row.step < 0.1 ? 2 : 1);
    box->setRange(row.minimum, row.maximum);
    box->setSingleStep(row.step);
    box->setSuffix(row.translatedSuffix());
    follow(settings, row, box, [box](const QVariant &value) {
        if (box->value() != value.toDouble())
            box->setValue(value.toDouble());
    });
    const QPointer<QObject> target(settings);
    QObject::connect(box, &QDoubleSpinBox::valueChanged, box, [target, property](double value) {
        if (target)
            property.write(target, value);
    });
    return box;
}

QWidget *choiceBox(QObject *settings, const SettingRow &row, const QMetaProperty &property, const QMetaEnum &valueSet,
                   QWidget *parent)
{
    auto *box = new QComboBox(parent);
    for (int i = 0; i < valueSet.keyCount(); ++i)
        box->addItem(SettingRows::valueTitle(valueSet, valueSet.value(i)), valueSet.value(i));
    follow(settings, row, box, [box](const QVariant &value) { box->setCurrentIndex(box->findData(rawValue(value))); });
    const QPointer<QObject> target(settings);
    const QMetaType type = property.metaType();
    QObject::connect(box, &QComboBox::currentIndexChanged, box, [target, property, type, box](int index) {
        if (!target || index < 0)
            return;
        int raw = box->itemData(index).toInt();
        property.write(target, QVariant(type, &raw));
    });
    return box;
}

QWidget *colorButton(QObject *settings, const SettingRow &row, const QMetaProperty &property, QWidget *parent)
{
    auto *button = new QPushButton(parent);
    const int size = button->fontMetrics().height();
    button->setIconSize(QSize(size * 2, size));
    follow(settings, row, button, [button, size](const QVariant &value) {
        const QColor color = value.value<QColor>();
        button->setIcon(swatch(color, size));
        button->setText(color.alpha() == 255 ? color.name() : color.name(QColor::HexArgb));
    });
    const QPointer<QObject> target(settings);
    const QString title = row.translatedLabel();
    QObject::connect(button, &QPushButton::clicked, button, [target, property, button, title] {
        if (!target)
            return;
        // Not modal to the program: the colour applies as the user picks it.
        auto *dialog = new QColorDialog(property.read(target).value<QColor>(), button->window());
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setWindowTitle(title);
        dialog->setOption(QColorDialog::ShowAlphaChannel);
        QObject::connect(dialog, &QColorDialog::currentColorChanged, button, [target, property](const QColor &color) {
            if (target && color.isValid())
                property.write(target, QVariant::fromValue(color));
        });
        const QColor before = property.read(target).value<QColor>();
        QObject::connect(dialog, &QDialog::rejected, button, [target, property, before] {
            if (target)
                property.write(target, QVariant::fromValue(before));
        });
        dialog->open();
    });
    return button;
}

QWidget *applicationButton(QObject *settings, const SettingRow &row, const QMetaProperty &property, QWidget *parent,
                           const SettingEditors::ApplicationChooser &chooseApplication)
{
    auto *button = new QPushButton(parent);
    follow(settings, row, button, [button](const QVariant &value) {
        const PXFilePtr file = value.value<PXFilePtr>();
        if (!file) {
            button->setText(tr("Choose…"));
            button->setIcon({});
            return;
        }
        const Applications::ApplicationInfo application = Applications::applicationInfo(file->path());
        button->setText(application.name.isEmpty() ? file->displayName() : application.name);
        button->setIcon(QIcon::fromTheme(application.icon));
    });
    const QPointer<QObject> target(settings);
    QObject::connect(button, &QPushButton::clicked, button, [target, property, button, chooseApplication] {
        if (!chooseApplication)
            return;
        chooseApplication(button->window(), [target, property](const QString &desktopFile) {
            if (target)
                property.write(target, QVariant::fromValue(PXFile::fileForPath(desktopFile)));
        });
    });
    return button;
}

} // namespace

namespace SettingEditors {

QWidget *make(QObject *settings, const SettingRow &row, QWidget *parent, const ApplicationChooser &chooseApplication)
{
    const QMetaProperty property = propertyOf(settings, row.property);
    if (!property.isValid())
        return nullptr;
    const QMetaType type = property.metaType();
    QWidget *editor = nullptr;
    if (type == QMetaType::fromType<bool>())
        editor = checkBox(settings, row, property, parent);
    else if (type == QMetaType::fromType<int>())
        editor = integerBox(settings, row, property, parent);
    else if (type == QMetaType::fromType<double>())
        editor = numberBox(settings, row, property, parent);
    else if (type == QMetaType::fromType<QColor>())
        editor = colorButton(settings, row, property, parent);
    else if (type == QMetaType::fromType<PXFilePtr>())
        editor = applicationButton(settings, row, property, parent, chooseApplication);
    else if (const QMetaEnum valueSet = valueSetOf(type); valueSet.isValid())
        editor = choiceBox(settings, row, property, valueSet, parent);
    if (!editor)
        return nullptr;
    editor->setObjectName(QLatin1String(row.property));
    editor->setAccessibleName(row.translatedLabel());
    return editor;
}

} // namespace SettingEditors
