#include "ui/browser/ThumbnailNameEditor.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QKeyEvent>
#include <QLineEdit>

namespace {

// A line edit leaves Return and Enter to its parent, for a dialog's default button; here the
// parent is the grid, which would open the file as well.
class NameLineEdit : public QLineEdit
{
public:
    using QLineEdit::QLineEdit;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        QLineEdit::keyPressEvent(event);
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            event->accept();
    }
};

} // namespace

ThumbnailNameEditor::ThumbnailNameEditor(QAbstractScrollArea *view)
    : m_view(view)
{ }

ThumbnailNameEditor::~ThumbnailNameEditor()
{
    // An open editor loses its focus while the view goes away: it must not commit then.
    if (m_editor) {
        m_editor->disconnect(this);
        delete m_editor;
    }
}

void ThumbnailNameEditor::open(int index, const QString &name, const QRect &rect)
{
    m_index = index;
    auto *editor = new NameLineEdit(m_view->viewport());
    m_editor = editor;
    editor->setAlignment(Qt::AlignHCenter);
    editor->setText(name);
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > 0)
        editor->setSelection(0, dot);
    else
        editor->selectAll();
    editor->setGeometry(rect);
    editor->show();
    editor->setFocus(Qt::OtherFocusReason);
    connect(editor, &QLineEdit::returnPressed, this, [this] { close(true); });
    connect(editor, &QLineEdit::editingFinished, this, [this] {
        if (m_editor && !m_editor->hasFocus())
            close(true);
    });
    auto *escape = new QAction(editor);
    escape->setShortcut(Qt::Key_Escape);
    escape->setShortcutContext(Qt::WidgetShortcut);
    editor->addAction(escape);
    connect(escape, &QAction::triggered, this, [this] { close(false); });
}

void ThumbnailNameEditor::move(QPoint topLeft)
{
    if (m_editor)
        m_editor->move(topLeft);
}

void ThumbnailNameEditor::close(bool commit)
{
    if (!m_editor)
        return;
    QLineEdit *editor = m_editor;
    m_editor = nullptr;
    const QString text = editor->text();
    const int index = m_index;
    m_index = -1;
    editor->hide();
    editor->deleteLater();
    m_view->setFocus(Qt::OtherFocusReason);
    if (commit && index >= 0)
        Q_EMIT committed(index, text);
}
