#include "ui/settings/SettingsWindow.h"

#include "core/settings/AppSettings.h"
#include "ui/browser/ApplicationChooser.h"
#include "ui/common/CloseKeys.h"
#include "ui/hotkeys/HotkeysController.h"
#include "ui/hotkeys/HotkeysView.h"
#include "ui/settings/FavoritesEditor.h"
#include "ui/settings/SettingRows.h"

#include <QAction>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace {

constexpr SettingsSection sections[] = {SettingsSection::general, SettingsSection::browser,
                                        SettingsSection::imageViewing, SettingsSection::favorites,
                                        SettingsSection::hotkeys};

QIcon sectionIcon(SettingsSection section)
{
    switch (section) {
    case SettingsSection::general: return QIcon::fromTheme(QStringLiteral("preferences-system"));
    case SettingsSection::browser:
        return QIcon::fromTheme(QStringLiteral("view-list-icons"), QIcon::fromTheme(QStringLiteral("folder-pictures")));
    case SettingsSection::imageViewing: return QIcon::fromTheme(QStringLiteral("image-x-generic"));
    case SettingsSection::favorites:
        return QIcon::fromTheme(QStringLiteral("bookmarks"), QIcon::fromTheme(QStringLiteral("user-bookmarks")));
    case SettingsSection::hotkeys: return QIcon::fromTheme(QStringLiteral("preferences-desktop-keyboard"));
    }
    return {};
}

void askResetQuestion(QWidget *window, std::function<void(bool reset)> answer)
{
    auto *box = new QMessageBox(QMessageBox::Question, SettingsWindow::tr("Reset Alerts and Warnings"),
                                SettingsWindow::tr("Reset Alerts and Warnings?"), QMessageBox::Cancel, window);
    box->setInformativeText(SettingsWindow::tr("This will allow you to see one-time alerts and warnings again"));
    QPushButton *reset = box->addButton(SettingsWindow::tr("Reset"), QMessageBox::AcceptRole);
    box->setDefaultButton(reset);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    QObject::connect(box, &QMessageBox::finished, box, [box, reset, answer] { answer(box->clickedButton() == reset); });
    box->open();
}

// A page that scrolls when the window is smaller than its rows.
QWidget *scrolling(QWidget *content)
{
    auto *area = new QScrollArea;
    area->setWidget(content);
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    return area;
}

} // namespace

SettingsWindow::SettingsWindow(AppSettings *settings, HotkeysController *hotkeys, QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_settings(settings)
    , m_hotkeys(hotkeys)
    , m_sections(new QListWidget(this))
    , m_pages(new QStackedWidget(this))
    , m_resetQuestion(&askResetQuestion)
    , m_chooseApplication(&ApplicationChooser::openForPhotosAndVideos)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(tr("Settings"));
    setAccessibleName(windowTitle());
    resize(780, 600);

    m_sections->setObjectName(QStringLiteral("settingsSections"));
    m_sections->setAccessibleName(tr("Sections"));
    m_sections->setIconSize(QSize(24, 24));
    m_sections->setSpacing(2);
    int widest = 0;
    for (const SettingsSection section : sections) {
        auto *item = new QListWidgetItem(sectionIcon(section), SettingRows::sectionTitle(section), m_sections);
        widest = std::max(widest, m_sections->fontMetrics().horizontalAdvance(item->text()));
        m_pages->addWidget(makeSection(section));
    }
    // The longest title beside its icon, with room for the gap, the frame and the margins.
    m_sections->setFixedWidth(widest + m_sections->iconSize().width() + 48);

    auto *layout = new QHBoxLayout(this);
    layout->addWidget(m_sections);
    layout->addWidget(m_pages, 1);

    CloseKeys::install(this, CloseKeys::Escape::closes);

    connect(m_sections, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0)
            return;
        m_pages->setCurrentIndex(row);
        if (m_settings)
            m_settings->setSelectedSettingsSection(sections[row]);
    });
    showSection(settings->selectedSettingsSection().value_or(SettingsSection::general));
}

void SettingsWindow::showSection(SettingsSection section)
{
    const int row = int(std::find(std::begin(sections), std::end(sections), section) - std::begin(sections));
    m_sections->setCurrentRow(row < int(std::size(sections)) ? row : 0);
}

SettingsSection SettingsWindow::currentSection() const
{
    const int row = m_sections->currentRow();
    return row >= 0 && row < int(std::size(sections)) ? sections[row] : SettingsSection::general;
}

void SettingsWindow::editFavoriteApplications()
{
    showSection(SettingsSection::favorites);
    m_favoriteApps->focusList();
}

void SettingsWindow::editFavoriteFolders()
{
    showSection(SettingsSection::favorites);
    m_favoriteFolders->focusList();
}

QWidget *SettingsWindow::editorFor(const char *property) const
{
    return m_editors.value(QLatin1String(property));
}

void SettingsWindow::setApplicationChooser(SettingEditors::ApplicationChooser chooser)
{
    m_chooseApplication = std::move(chooser);
    if (m_favoriteApps)
        m_favoriteApps->setChooser(m_chooseApplication);
}

void SettingsWindow::resetAlertsAndWarnings()
{
    const QPointer<AppSettings> settings(m_settings);
    m_resetQuestion(this, [settings](bool reset) {
        if (reset && settings)
            settings->setAlertsAndWarnings({});
    });
}

QWidget *SettingsWindow::makeSection(SettingsSection section)
{
    switch (section) {
    case SettingsSection::general: return makeRowsPage(section, makeResetAlertsRow());
    case SettingsSection::browser:
    case SettingsSection::imageViewing: return makeRowsPage(section);
    case SettingsSection::favorites: {
        auto *page = new QWidget;
        auto *layout = new QVBoxLayout(page);
        m_favoriteApps = new FavoritesEditor(m_settings, FavoritesEditor::Kind::applications, page);
        m_favoriteApps->setChooser(m_chooseApplication);
        m_favoriteFolders = new FavoritesEditor(m_settings, FavoritesEditor::Kind::folders, page);
        auto *apps = new QGroupBox(tr("Applications in the Open With menu"), page);
        (new QVBoxLayout(apps))->addWidget(m_favoriteApps);
        auto *folders = new QGroupBox(tr("Folders in the Move To menu"), page);
        (new QVBoxLayout(folders))->addWidget(m_favoriteFolders);
        layout->addWidget(apps, 1);
        layout->addWidget(folders, 1);
        return page;
    }
    case SettingsSection::hotkeys:
        if (m_hotkeys)
            return m_hotkeysView = new HotkeysView(m_hotkeys);
        return new QLabel(tr("Hotkeys cannot be changed in this window."));
    }
    return new QWidget;
}

// The section's plain rows, by group, each group a box of label and editor rows.
QWidget *SettingsWindow::makeRowsPage(SettingsSection section, QWidget *extra)
{
    auto *content = new QWidget;
    auto *layout = new QVBoxLayout(content);
    QObject *owners[] = {m_settings.data(), m_settings->slideshowSettings().get()};
    const auto chooseApplication = [this](QWidget *parent, std::function<void(const QString &)> chosen) {
        if (m_chooseApplication)
            m_chooseApplication(parent, std::move(chosen));
    };
    QList<const SettingRow *> rows;
    for (const SettingRow &row : SettingRows::all()) {
        if (row.section == section)
            rows.append(&row);
    }
    for (qsizetype first = 0; first < rows.size();) {
        const char *group = rows.at(first)->group;
        qsizetype end = first;
        bool onlySwitches = true;
        while (end < rows.size() && qstrcmp(rows.at(end)->group, group) == 0) {
            const QObject *owner = owners[int(rows.at(end)->owner)];
            const int index = owner->metaObject()->indexOfProperty(rows.at(end)->property);
            onlySwitches &=
                index >= 0 && owner->metaObject()->property(index).metaType() == QMetaType::fromType<bool>();
            ++end;
        }
        auto *box = new QGroupBox(rows.at(first)->translatedGroup(), content);
        auto *form = new QFormLayout(box);
        form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
        for (qsizetype i = first; i < end; ++i) {
            const SettingRow &row = *rows.at(i);
            QWidget *editor = SettingEditors::make(owners[int(row.owner)], row, box, chooseApplication);
            if (!editor)
                continue;
            m_editors.insert(QLatin1String(row.property), editor);
            if (qobject_cast<QCheckBox *>(editor)) {
                if (onlySwitches)
                    form->addRow(editor);
                else
                    form->addRow(QString(), editor);
            } else {
                auto *label = new QLabel(row.translatedLabel() + QLatin1Char(':'), box);
                label->setBuddy(editor);
                form->addRow(label, editor);
            }
        }
        layout->addWidget(box);
        first = end;
    }
    if (extra)
        layout->addWidget(extra);
    layout->addStretch(1);
    return scrolling(content);
}

QWidget *SettingsWindow::makeResetAlertsRow()
{
    auto *box = new QGroupBox(tr("Alerts and Warnings"));
    auto *layout = new QHBoxLayout(box);
    auto *question = new QLabel(tr("Want to see those fun one-time alerts and warnings again?"), box);
    question->setWordWrap(true);
    auto *button = new QPushButton(tr("Reset Alerts and Warnings"), box);
    button->setObjectName(QStringLiteral("resetAlertsAndWarnings"));
    button->setAccessibleName(button->text());
    question->setBuddy(button);
    layout->addWidget(question, 1);
    layout->addWidget(button);
    connect(button, &QPushButton::clicked, this, &SettingsWindow::resetAlertsAndWarnings);
    const auto update = [this, button] {
        button->setEnabled(m_settings && m_settings->alertsAndWarnings() != AlertsAndWarnings());
    };
    update();
    connect(m_settings, &AppSettings::alertsAndWarningsChanged, button, update);
    return box;
}
