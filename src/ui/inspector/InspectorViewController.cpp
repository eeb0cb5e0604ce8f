#include "ui/inspector/InspectorViewController.h"

#include "core/app/Dispatch.h"
#include "core/imaging/ImagePropertiesLoader.h"
#include "core/imaging/ImagePropertiesManager.h"
#include "core/model/PXFile.h"

#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTreeWidget>
#include <QUrlQuery>
#include <QVBoxLayout>

namespace {
constexpr std::array tabs{InspectorTab::general, InspectorTab::exif, InspectorTab::iptc, InspectorTab::gps,
                          InspectorTab::tiff};
}

InspectorViewController::InspectorViewController(WindowSettingsPtr settings, QWidget *parent)
    : QWidget(parent)
    , m_windowSettings(settings ? std::move(settings) : std::make_shared<WindowSettings>())
    , m_stack(new QStackedWidget(this))
    , m_placeholder(new QLabel(tr("No Selection"), this))
    , m_failureLabel(new QLabel(this))
    , m_tabs(new QTabWidget(this))
    , m_loader(new ImagePropertiesLoader(nullptr, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_stack);
    m_placeholder->setAlignment(Qt::AlignCenter);
    m_placeholder->setEnabled(false);
    m_stack->addWidget(m_placeholder);
    auto *page = new QWidget(this);
    auto *pageLayout = new QVBoxLayout(page);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->setSpacing(0);
    m_failureLabel->setWordWrap(true);
    m_failureLabel->setTextFormat(Qt::PlainText);
    m_failureLabel->setContentsMargins(8, 6, 8, 6);
    m_failureLabel->setForegroundRole(QPalette::BrightText);
    m_failureLabel->setBackgroundRole(QPalette::Dark);
    m_failureLabel->setAutoFillBackground(true);
    m_failureLabel->hide();
    pageLayout->addWidget(m_failureLabel);
    pageLayout->addWidget(m_tabs, 1);
    m_stack->addWidget(page);
    m_tabs->setDocumentMode(true);
    // Going back to a file shown before costs no read while the file is unchanged.
    m_loader->setCache(&ImagePropertiesManager::shared());
    for (InspectorTab tab : tabs) {
        auto *tree = new QTreeWidget;
        tree->setColumnCount(2);
        tree->setHeaderHidden(true);
        tree->setRootIsDecorated(false);
        tree->setIndentation(0);
        tree->setSelectionMode(QAbstractItemView::ExtendedSelection);
        tree->setUniformRowHeights(false);
        tree->setFrameShape(QFrame::NoFrame);
        tree->setWordWrap(true);
        tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
        tree->header()->setStretchLastSection(true);
        m_trees.append(tree);
        m_tabs->addTab(tree, inspectorTabTitle(tab));
        m_rows.append(QList<InspectorRow>());
    }
    m_tabs->setCurrentIndex(int(m_windowSettings->inspectorActiveTab()));
    connect(m_tabs, &QTabWidget::currentChanged, this, [this](int index) {
        if (index >= 0 && index < int(tabs.size()))
            m_windowSettings->setInspectorActiveTab(tabs[size_t(index)]);
    });
    connect(m_windowSettings.get(), &WindowSettings::inspectorActiveTabChanged, this,
            [this](InspectorTab tab) { m_tabs->setCurrentIndex(int(tab)); });
    m_stack->setCurrentWidget(m_placeholder);
}

InspectorViewController::~InspectorViewController() = default;

void InspectorViewController::setFiles(const QList<PXFilePtr> &files)
{
    m_files = files;
    m_items.clear();
    m_loader->cancel();
    ++m_generation;
    showFailures({});
    if (files.isEmpty()) {
        m_rowsPending = false;
        for (QList<InspectorRow> &rows : m_rows)
            rows.clear();
        for (QTreeWidget *tree : std::as_const(m_trees))
            tree->clear();
        m_stack->setCurrentWidget(m_placeholder);
        Q_EMIT rowsChanged();
        return;
    }
    m_stack->setCurrentWidget(m_tabs->parentWidget());
    rebuildRows(true);
}

bool InspectorViewController::isLoading() const
{
    return m_rowsPending || m_loader->isLoading();
}

void InspectorViewController::rebuildRows(bool startLoading)
{
    m_rowsPending = true;
    const quint64 generation = m_generation;
    const QList<PXFilePtr> files = m_files;
    const QList<ImagePropertiesItemPtr> items = m_items;
    QPointer<InspectorViewController> self(this);
    runOnPool(QStringLiteral("Inspector"), [self, generation, files, items, startLoading] {
        QList<PXFilePtr> images;
        if (startLoading) {
            for (const PXFilePtr &file : files) {
                if (file->isImage())
                    images.append(file);
            }
        }
        QList<QList<InspectorRow>> rowsByTab;
        for (InspectorTab tab : tabs)
            rowsByTab.append(inspectorRows(tab, items, files));
        postToGui([self, generation, rowsByTab, images] {
            if (!self || generation != self->m_generation)
                return;
            self->m_rowsPending = false;
            self->showRows(rowsByTab);
            if (images.isEmpty())
                return;
            self->m_loader->load(images, [self, generation](const ImagePropertiesLoader::CompletionState &state) {
                if (!self || generation != self->m_generation)
                    return;
                self->m_items = state.results;
                self->showFailures(state.errors);
                self->rebuildRows(false);
            });
        });
    });
}

void InspectorViewController::showRows(const QList<QList<InspectorRow>> &rowsByTab)
{
    for (qsizetype i = 0; i < rowsByTab.size() && i < m_trees.size(); ++i) {
        m_rows[i] = rowsByTab[i];
        fillTab(m_trees[i], rowsByTab[i]);
    }
    Q_EMIT rowsChanged();
}

void InspectorViewController::showFailures(const QList<ImagePropertiesError> &errors)
{
    QStringList lines;
    for (const ImagePropertiesError &error : errors) {
        const QString reason = error.reason.isEmpty() ? tr("it cannot be read as an image") : error.reason;
        lines.append(tr("The metadata of “%1” cannot be shown: %2").arg(error.file->displayName(), reason));
    }
    m_failureLabel->setText(lines.join(QLatin1Char('\n')));
    m_failureLabel->setVisible(!lines.isEmpty());
}

QString InspectorViewController::failureText() const
{
    return m_failureLabel->text();
}

QList<InspectorRow> InspectorViewController::rows(InspectorTab tab) const
{
    return m_rows.value(int(tab));
}

QUrl InspectorViewController::mapUrl(double latitude, double longitude)
{
    QUrl url(QStringLiteral("https://www.openstreetmap.org/"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("mlat"), QString::number(latitude, 'f', 6));
    query.addQueryItem(QStringLiteral("mlon"), QString::number(longitude, 'f', 6));
    url.setQuery(query);
    url.setFragment(
        QStringLiteral("map=15/%1/%2").arg(QString::number(latitude, 'f', 6), QString::number(longitude, 'f', 6)));
    return url;
}

QString InspectorViewController::mapText(const InspectorRow &row) const
{
    // The link needs one position: the records of the selection must agree on it.
    std::optional<std::pair<double, double>> position;
    for (const ImagePropertiesItemPtr &item : m_items) {
        const GPSInfo info = item->gpsInfo();
        if (!info.coordinate)
            continue;
        if (position && *position != *info.coordinate)
            return row.value.toHtmlEscaped();
        position = info.coordinate;
    }
    if (!position)
        return row.value.toHtmlEscaped();
    const QUrl url = mapUrl(position->first, position->second);
    return QStringLiteral("%1<br><a href=\"%2\">%3</a>")
        .arg(row.value.toHtmlEscaped(), url.toString(QUrl::FullyEncoded).toHtmlEscaped(), tr("Open in Map"));
}

void InspectorViewController::fillTab(QTreeWidget *tree, const QList<InspectorRow> &rows)
{
    tree->clear();
    QFont headerFont = tree->font();
    headerFont.setBold(true);
    const QColor labelColor = tree->palette().color(QPalette::PlaceholderText);
    // Rows without a value are left out, and so is a section left without rows.
    QList<const InspectorRow *> shown;
    for (const InspectorRow &row : rows) {
        if (row.isHeader) {
            if (!shown.isEmpty() && shown.last()->isHeader)
                shown.removeLast();
            shown.append(&row);
        } else if (!row.value.isEmpty()) {
            shown.append(&row);
        }
    }
    if (!shown.isEmpty() && shown.last()->isHeader)
        shown.removeLast();
    for (const InspectorRow *shownRow : std::as_const(shown)) {
        const InspectorRow &row = *shownRow;
        auto *item = new QTreeWidgetItem(tree);
        if (row.isHeader) {
            item->setText(0, row.label);
            item->setFont(0, headerFont);
            item->setFirstColumnSpanned(true);
            item->setFlags(Qt::ItemIsEnabled);
            continue;
        }
        item->setText(0, row.label);
        item->setForeground(0, labelColor);
        item->setTextAlignment(0, Qt::AlignRight | Qt::AlignTop);
        item->setToolTip(1, row.value);
        if (row.identifier == QLatin1String("gpsInformation") && !row.value.isEmpty()) {
            auto *label = new QLabel(mapText(row));
            label->setOpenExternalLinks(true);
            label->setTextInteractionFlags(Qt::TextBrowserInteraction);
            tree->setItemWidget(item, 1, label);
            continue;
        }
        item->setText(1, row.value);
    }
}
