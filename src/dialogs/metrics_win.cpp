#include "dialogs/metrics_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

// Calls that Windows has had since version 10; older versions know one resolution only.
template <typename Function>
Function UserFunction(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), name)));
}

int SystemDpi() {
    const HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return dpi;
}

int WindowDpi(HWND window) {
    using GetDpiForWindowFunction = UINT(WINAPI*)(HWND);
    static const auto getDpi = UserFunction<GetDpiForWindowFunction>("GetDpiForWindow");
    const UINT dpi = getDpi != nullptr && window != nullptr ? getDpi(window) : 0;
    return dpi != 0 ? static_cast<int>(dpi) : SystemDpi();
}

LOGFONTW MessageFont(int dpi) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    using ForDpiFunction = BOOL(WINAPI*)(UINT, UINT, PVOID, UINT, UINT);
    static const auto forDpi = UserFunction<ForDpiFunction>("SystemParametersInfoForDpi");
    if (forDpi != nullptr && forDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0, static_cast<UINT>(dpi))) {
        return metrics.lfMessageFont;
    }
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    metrics.lfMessageFont.lfHeight = MulDiv(metrics.lfMessageFont.lfHeight, dpi, SystemDpi());
    return metrics.lfMessageFont;
}

} // namespace

Metrics::Metrics(HWND window, int dpi) : dpi_(dpi != 0 ? dpi : WindowDpi(window)) {
    LOGFONTW font = MessageFont(dpi_);
    font_ = CreateFontIndirectW(&font);
    LOGFONTW link = font;
    link.lfUnderline = TRUE;
    linkFont_ = CreateFontIndirectW(&link);
    font.lfWeight = FW_BOLD;
    boldFont_ = CreateFontIndirectW(&font);
    lineHeight_ = static_cast<int>(TextSize(L"Ag").cy);
}

Metrics::~Metrics() {
    DeleteObject(font_);
    DeleteObject(boldFont_);
    DeleteObject(linkFont_);
}

int Metrics::Measure(const std::wstring& text, RECT& box, UINT format, HFONT font) {
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, font);
    const int height = DrawTextW(screen, text.c_str(), static_cast<int>(text.size()), &box, format | DT_CALCRECT);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return height;
}

SIZE Metrics::TextSize(const std::wstring& text, bool bold) const {
    RECT box{};
    Measure(text, box, DT_LEFT, bold ? boldFont_ : font_);
    return {box.right - box.left, box.bottom - box.top};
}

int Metrics::WrappedHeight(const std::wstring& text, int width, bool bold) const {
    RECT box{0, 0, width, 0};
    return std::max(Measure(text, box, DT_LEFT | DT_WORDBREAK, bold ? boldFont_ : font_), lineHeight_);
}

int Metrics::ButtonWidth(const std::wstring& text) const {
    return std::max(Scale(75), static_cast<int>(TextSize(text).cx) + Scale(20));
}

int Brightness(COLORREF colour) {
    return (GetRValue(colour) * 299 + GetGValue(colour) * 587 + GetBValue(colour) * 114) / 1000;
}

SIZE OuterSize(SIZE client, DWORD style, DWORD extendedStyle, int dpi) {
    RECT box{0, 0, client.cx, client.cy};
    using ForDpiFunction = BOOL(WINAPI*)(LPRECT, DWORD, BOOL, DWORD, UINT);
    static const auto forDpi = UserFunction<ForDpiFunction>("AdjustWindowRectExForDpi");
    if (forDpi == nullptr || !forDpi(&box, style, FALSE, extendedStyle, static_cast<UINT>(dpi))) {
        AdjustWindowRectEx(&box, style, FALSE, extendedStyle);
    }
    return {box.right - box.left, box.bottom - box.top};
}

} // namespace quorvex::dialogs
