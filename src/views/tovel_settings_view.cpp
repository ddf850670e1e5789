#include "views/tovel_settings_view.h"

#include "model/tovel_model.h"
#include "settings/shortcut_preferences.h"
#include "settings/updates.h"
#include "views/components/menu_text.h"
#include "views/components/plain_button.h"
#include "views/icon_choice.h"
#include "views/model_watch.h"
#include "views/text_style.h"
#include "views/theme.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QMenu>

#include <algorithm>

namespace tovel {

using namespace Qt::StringLiterals;

namespace {

constexpr int symbolSize = 18; // of a symbol set in text of 16
constexpr int buttonSize = 28;
constexpr QSize frame(36, 32);

} // namespace

TovelSettingsView::TovelSettingsView(TovelModel &model, TovelUpdates &updates,
                                     ShortcutPreferences &shortcuts,
                                     std::function<void()> changeShortcut, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_updates(updates)
    , m_shortcuts(shortcuts)
    , m_changeShortcut(std::move(changeShortcut))
    , m_button(new PlainButton)
    , m_menu(std::make_unique<QMenu>())
    , m_watch(new ModelWatch(
          model, [this] { redraw(); }, this))
{
    m_button->setSymbol(u"gearshape"_s, std::min(grown(symbolSize), buttonSize));
    m_button->setFixedSize(buttonSize, buttonSize);
    m_button->setAccessibleName(u"Tovel settings"_s);
    m_button->setToolTip(u"Settings"_s);
    m_button->setColor([](const QPalette &palette) { return TovelTheme::accent(palette); });
    connect(m_button, &PlainButton::clicked, this, &TovelSettingsView::showMenu);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_button, 0, Qt::AlignCenter);
    setFixedSize(frame);

    connect(&updates, &TovelUpdates::canCheckChanged, m_watch, &ModelWatch::schedule);
    connect(&shortcuts, &ShortcutPreferences::shortcutChanged, m_watch, &ModelWatch::schedule);
    m_menu->setObjectName(u"settings"_s);
    fillMenu();
    redraw();
}

TovelSettingsView::~TovelSettingsView() = default;

void TovelSettingsView::fillMenu()
{
    m_pin = m_menu->addAction(u"Pin window"_s);
    m_pin->setCheckable(true);
    connect(m_pin, &QAction::triggered, this, [this](bool on) { m_model.setPinned(on); });
    m_follow = m_menu->addAction(u"Follow windows"_s);
    m_follow->setCheckable(true);
    connect(m_follow, &QAction::triggered, this, [this](bool on) { m_model.setFollow(on); });
    connect(m_menu->addAction(u"Refresh"_s), &QAction::triggered, this,
            [this] { m_model.refresh(); });
    connect(m_menu->addAction(u"Accessibility Settings…"_s), &QAction::triggered, this,
            [this] { m_model.requestAccess(); });
    m_styles
        = addIconChoice(*m_menu, [this](TovelIconStyle style) { m_model.setIconStyle(style); });
    m_checkForUpdates = m_menu->addAction(u"Check for Updates…"_s);
    connect(m_checkForUpdates, &QAction::triggered, this, [this] { m_updates.check(); });
    m_menu->addSeparator();
    m_menu->addAction(menuText(TovelUpdates::versionDescription()))->setEnabled(false);
    m_shortcut = m_menu->addAction(QString());
    m_shortcut->setEnabled(static_cast<bool>(m_changeShortcut));
    connect(m_shortcut, &QAction::triggered, this, [this] { m_changeShortcut(); });
    QAction *quit = m_menu->addAction(u"Quit Tovel"_s);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q); // shown; the application menu's acts
    connect(quit, &QAction::triggered, this, [] { QCoreApplication::quit(); });
}

void TovelSettingsView::redraw()
{
    m_pin->setChecked(m_model.pinned());
    m_follow->setChecked(m_model.follow());
    markIconChoice(*m_styles, m_model.iconStyle());
    m_checkForUpdates->setEnabled(m_updates.canCheck());
    m_shortcut->setText(
        menuText(u"Keyboard Shortcut… ("_s + m_shortcuts.shortcut().label() + u')'));
}

void TovelSettingsView::showMenu()
{
    redraw();
    const QSize size = m_menu->sizeHint();
    const QPoint below = m_button->mapToGlobal(QPoint(0, m_button->height() + 2));
    const bool toTheRight = isRightToLeft();
    m_menu->popup(toTheRight ? below : below + QPoint(m_button->width() - size.width(), 0));
    if (!m_button->underMouse()) // opened by key
        m_menu->setActiveAction(m_pin);
}

} // namespace tovel
