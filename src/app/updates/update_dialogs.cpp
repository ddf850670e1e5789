#include "app/updates/update_dialogs.h"

#include "app/updates/update_dialog.h"
#include "updater/feed_address.h"

#include <QLocale>
#include <QPushButton>
#include <QWindow>

#include <utility>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

// With both parts, as two releases may share what the user knows them by.
QString described(const ProgramVersion &version)
{
    if (version.version.isEmpty() || version.shown() == version.version)
        return version.shown();
    return version.shown() + u" ("_s + version.version + u')';
}

QString releaseText(const ProgramVersion &current, const SUAppcastItem &item)
{
    QString text = u"Version "_s + described(versionOf(item)) + u" is available"_s;
    if (item.date.isValid()) {
        text += u" since "_s
            + QLocale().toString(item.date.toLocalTime().date(), QLocale::LongFormat);
    }
    return text + u"; you have "_s + described(current)
        + u". It can be installed with your system's package manager."_s;
}

} // namespace

UpdateDialogs::UpdateDialogs(PageOpener openPage, Owner owner)
    : m_openPage(std::move(openPage))
    , m_owner(std::move(owner))
{ }

UpdateDialogs::~UpdateDialogs() = default;

void UpdateDialogs::showChecking(std::function<void()> cancel)
{
    auto dialog = std::make_unique<UpdateDialog>(u"Checking for updates…"_s, QString());
    dialog->addBusyBar();
    dialog->addClosingButton(QDialogButtonBox::Cancel);
    show(std::move(dialog), std::move(cancel));
}

void UpdateDialogs::showUpdateFound(const ProgramVersion &current, const SUAppcastItem &item,
                                    std::function<void()> closed)
{
    auto dialog = std::make_unique<UpdateDialog>(item.title.isEmpty() ? u"A new version of Tovel"_s
                                                                      : item.title,
                                                 releaseText(current, item));
    if (!item.itemDescription.isEmpty())
        dialog->addNotes(u"Release notes"_s, item.itemDescription);
    if (isReleasePage(item.infoURL)) {
        const QPushButton *open = dialog->addActionButton(u"Open Release Page"_s);
        connect(open, &QPushButton::clicked, this,
                [this, shown = dialog.get(), page = item.infoURL] { openPage(*shown, page); });
    }
    dialog->addClosingButton(QDialogButtonBox::Close);
    show(std::move(dialog), std::move(closed));
}

void UpdateDialogs::showUpToDate(const ProgramVersion &current, std::function<void()> closed)
{
    auto dialog = std::make_unique<UpdateDialog>(
        u"Tovel is up to date"_s, u"Version "_s + described(current) + u" is the newest."_s);
    dialog->addClosingButton(QDialogButtonBox::Close);
    show(std::move(dialog), std::move(closed));
}

void UpdateDialogs::showFailure(const QString &reason, std::function<void()> closed)
{
    auto dialog = std::make_unique<UpdateDialog>(u"Checking for updates failed"_s, reason);
    dialog->addClosingButton(QDialogButtonBox::Close);
    show(std::move(dialog), std::move(closed));
}

void UpdateDialogs::dismiss()
{
    if (!m_dialog)
        return;
    m_dialog->disconnect(this);
    m_dialog->hide();
    m_dialog.release()->deleteLater();
}

void UpdateDialogs::show(std::unique_ptr<UpdateDialog> dialog, std::function<void()> closed)
{
    dismiss();
    m_dialog = std::move(dialog);
    connect(m_dialog.get(), &QDialog::finished, this, [this, closed = std::move(closed)] {
        m_dialog.release()->deleteLater();
        closed();
    });
    if (QWindow *owner = m_owner ? m_owner() : nullptr) {
        m_dialog->winId(); // makes the window that the next line speaks of
        m_dialog->windowHandle()->setTransientParent(owner);
    }
    m_dialog->show();
    m_dialog->raise();
    m_dialog->activateWindow();
}

void UpdateDialogs::openPage(UpdateDialog &dialog, const QUrl &page)
{
    if (m_openPage(page))
        dialog.accept();
    else
        dialog.setText(u"This page cannot be opened: "_s + page.toString());
}

} // namespace tovel
