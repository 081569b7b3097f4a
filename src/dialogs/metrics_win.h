#pragma once

#include <windows.h>

#include <string>

namespace quorvex::dialogs {

// Sizes of one window at one resolution: the user's message font and lengths made from 96-DPI pixels.
class Metrics {
  public:
    // dpi 0: the resolution of the window, which is the system's unless the host is aware of monitors.
    Metrics(HWND window, int dpi);
    ~Metrics();
    Metrics(const Metrics&) = delete;
    Metrics& operator=(const Metrics&) = delete;

    int Dpi() const { return dpi_; }
    HFONT Font() const { return font_; }
    HFONT BoldFont() const { return boldFont_; }
    HFONT LinkFont() const { return linkFont_; }
    int Scale(int pixels) const { return MulDiv(pixels, dpi_, kBaseDpi); }
    int FromTwips(int twips) const { return MulDiv(twips, dpi_, kTwipsPerInch); }

    // "&" before a mnemonic takes no room. Line breaks are kept.
    SIZE TextSize(const std::wstring& text, bool bold = false) const;
    // Height of the text wrapped at a width.
    int WrappedHeight(const std::wstring& text, int width, bool bold = false) const;

    int LineHeight() const { return lineHeight_; }
    // As tight as the text, which an edit puts at its top, needs: it would look out of the middle otherwise.
    int EditHeight() const { return lineHeight_ + 2 * GetSystemMetrics(SM_CYEDGE) + Scale(2) + 2; }
    int ButtonHeight() const { return lineHeight_ + Scale(10); }
    int ButtonWidth(const std::wstring& text) const; // never below the usual one
    int Margin() const { return Scale(11); }
    int Gap() const { return Scale(7); }
    int SmallGap() const { return Scale(4); }

  private:
    static constexpr int kBaseDpi = 96;
    static constexpr int kTwipsPerInch = 1440;

    static int Measure(const std::wstring& text, RECT& box, UINT format, HFONT font);

    int dpi_;
    HFONT font_ = nullptr;
    HFONT boldFont_ = nullptr;
    HFONT linkFont_ = nullptr;
    int lineHeight_ = 0;
};

// 0 to 255.
int Brightness(COLORREF colour);

// Size of a whole window with such a client area.
SIZE OuterSize(SIZE client, DWORD style, DWORD extendedStyle, int dpi);

} // namespace quorvex::dialogs
