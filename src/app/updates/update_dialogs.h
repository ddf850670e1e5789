#pragma once

#include "updater/update_user_driver.h"

#include <QDesktopServices>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

class QWindow;

namespace tovel {

class UpdateDialog;

// Tells the user of update checks in windows of their own, which block nothing.
class UpdateDialogs final : public QObject, public UpdateUserDriver
{
public:
    // Shows a page to the user; false when it cannot.
    using PageOpener = std::function<bool(const QUrl &page)>;

    // The window that the dialogs are to stay above; null when there is none.
    using Owner = std::function<QWindow *()>;

    explicit UpdateDialogs(PageOpener openPage = &QDesktopServices::openUrl, Owner owner = {});
    ~UpdateDialogs() override;

    void showChecking(std::function<void()> cancel) override;
    void showUpdateFound(const ProgramVersion &current, const SUAppcastItem &item,
                         std::function<void()> closed) override;
    void showUpToDate(const ProgramVersion &current, std::function<void()> closed) override;
    void showFailure(const QString &reason, std::function<void()> closed) override;
    void dismiss() override;

    // The window that is shown, or null.
    UpdateDialog *dialog() const { return m_dialog.get(); }

private:
    void show(std::unique_ptr<UpdateDialog> dialog, std::function<void()> closed);
    void openPage(UpdateDialog &dialog, const QUrl &page);

    PageOpener m_openPage;
    Owner m_owner;
    std::unique_ptr<UpdateDialog> m_dialog;
};

} // namespace tovel
