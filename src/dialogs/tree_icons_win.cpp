#include "dialogs/tree_icons_win.h"

#include <array>
#include <cmath>
#include <cstdint>

namespace quorvex::dialogs {
namespace {

constexpr int kSamples = 4; // per pixel and direction, for smooth edges

// What covers a point of the unit square: 0 nothing, 1 the shape, 2 its light part.
int House(double x, double y) {
    const double fromMiddle = std::fabs(x - 0.5);
    const bool roof = y > 0.10 && y < 0.50 && fromMiddle < (y - 0.10) * 1.15;
    const bool walls = y >= 0.50 && y < 0.90 && fromMiddle < 0.34;
    const bool door = y > 0.60 && y < 0.90 && fromMiddle < 0.10;
    if (door) return 2;
    return roof || walls ? 1 : 0;
}

int MapPin(double x, double y) {
    const double dx = x - 0.5;
    const double dy = y - 0.38;
    const double distance = std::sqrt(dx * dx + dy * dy);
    if (distance < 0.12) return 2;
    if (distance < 0.30) return 1;
    return y >= 0.45 && y < 0.95 && std::fabs(dx) < (0.95 - y) * 0.52 ? 1 : 0;
}

std::uint32_t Pixel(int (*shape)(double, double), int x, int y, int size, COLORREF full, COLORREF light) {
    int covered = 0;
    int red = 0;
    int green = 0;
    int blue = 0;
    for (int sample = 0; sample < kSamples * kSamples; ++sample) {
        const int column = sample % kSamples;
        const int row = sample / kSamples;
        const double px = (x + (column + 0.5) / kSamples) / size;
        const double py = (y + (row + 0.5) / kSamples) / size;
        const int part = shape(px, py);
        if (part == 0) continue;
        const COLORREF colour = part == 1 ? full : light;
        ++covered;
        red += GetRValue(colour);
        green += GetGValue(colour);
        blue += GetBValue(colour);
    }
    // Colours premultiplied by their cover.
    constexpr int kAll = kSamples * kSamples;
    const auto channel = [](int value) { return static_cast<std::uint32_t>(value / kAll); };
    return channel(covered * 255) << 24 | channel(red) << 16 | channel(green) << 8 | channel(blue);
}

HBITMAP Draw(int (*shape)(double, double), int size, COLORREF full, COLORREF light) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size;
    info.bmiHeader.biHeight = -size; // first row on top
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    if (bitmap == nullptr) return nullptr;
    auto* pixels = static_cast<std::uint32_t*>(bits);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) *pixels++ = Pixel(shape, x, y, size, full, light);
    }
    return bitmap;
}

} // namespace

TreeIcons::~TreeIcons() {
    if (list_ != nullptr) ImageList_Destroy(list_);
}

void TreeIcons::Make(int pixels) {
    if (list_ != nullptr) ImageList_Destroy(list_);
    list_ = ImageList_Create(pixels, pixels, ILC_COLOR32, 2, 0);
    const COLORREF paper = GetSysColor(COLOR_WINDOW);
    const std::array<HBITMAP, 2> icons = {Draw(&MapPin, pixels, GetSysColor(COLOR_HIGHLIGHT), paper),
                                          Draw(&House, pixels, GetSysColor(COLOR_WINDOWTEXT), paper)};
    for (const HBITMAP icon : icons) {
        ImageList_Add(list_, icon, nullptr);
        DeleteObject(icon);
    }
}

} // namespace quorvex::dialogs
