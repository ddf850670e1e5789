#include "app/panel/appearance_palette.h"

#include <QColor>

namespace tovel {

namespace {

struct RoleColors
{
    QPalette::ColorRole role;
    QRgb light;
    QRgb dark;
};

constexpr RoleColors Colors[] = {
    {QPalette::Window, 0xF6F5F8, 0x1E1B2A},
    {QPalette::WindowText, 0x1B1826, 0xF1EFF8},
    {QPalette::Base, 0xFFFFFF, 0x2A2638},
    {QPalette::AlternateBase, 0xF3F0F8, 0x332E43},
    {QPalette::Text, 0x1B1826, 0xF1EFF8},
    {QPalette::PlaceholderText, 0x6B6779, 0xA9A4BC},
    {QPalette::Button, 0xF0EEF4, 0x353046},
    {QPalette::ButtonText, 0x1B1826, 0xF1EFF8},
    {QPalette::BrightText, 0xFFFFFF, 0xFFFFFF},
    {QPalette::ToolTipBase, 0xFFFFFF, 0x353046},
    {QPalette::ToolTipText, 0x1B1826, 0xF1EFF8},
    {QPalette::Highlight, 0x1B1464, 0xBDB5FF},
    {QPalette::HighlightedText, 0xFFFFFF, 0x1E1B2A},
    {QPalette::Link, 0x3A2FB8, 0xBDB5FF},
    {QPalette::LinkVisited, 0x6B3A8C, 0xD9B5EE},
    // What frames and bevels are drawn with.
    {QPalette::Light, 0xFFFFFF, 0x4A4460},
    {QPalette::Midlight, 0xF8F7FA, 0x403A54},
    {QPalette::Mid, 0xC2BECC, 0x292537},
    {QPalette::Dark, 0x9A96A6, 0x14121D},
    {QPalette::Shadow, 0x5A5666, 0x0A0910},
};

constexpr RoleColors DisabledColors[] = {
    {QPalette::WindowText, 0x9A96A6, 0x7B7690},      {QPalette::Text, 0x9A96A6, 0x7B7690},
    {QPalette::ButtonText, 0x9A96A6, 0x7B7690},      {QPalette::Highlight, 0xC2BECC, 0x4A4460},
    {QPalette::HighlightedText, 0x5A5666, 0xA9A4BC}, {QPalette::Base, 0xF6F5F8, 0x1E1B2A},
};

} // namespace

QPalette appearancePalette(bool dark)
{
    QPalette palette;
    for (const RoleColors &row : Colors)
        palette.setColor(row.role, QColor::fromRgb(dark ? row.dark : row.light));
    for (const RoleColors &row : DisabledColors) {
        palette.setColor(QPalette::Disabled, row.role,
                         QColor::fromRgb(dark ? row.dark : row.light));
    }
    return palette;
}

} // namespace tovel
