#include "dialogs/form_win.h"

#include <algorithm>

namespace quorvex::dialogs {
namespace {

constexpr int kLineHeights = 3; // text lines that a click on an arrow or one notch of the wheel goes

HWND ControlOf(HWND dialog, HWND focus) {
    while (focus != nullptr && GetParent(focus) != dialog) focus = GetParent(focus);
    return focus;
}

} // namespace

void Form::LayoutNow() {
    if (window_ == nullptr || metrics_ == nullptr || layingOut_ || IsIconic(window_)) return;
    layingOut_ = true; // a scroll bar that comes or goes changes the client area, which asks for a layout
    const SIZE least = LeastClient();
    RECT client{};
    // The bar of one direction takes room from the other one, which may need a bar then.
    for (int look = 0; look < 2; ++look) {
        GetClientRect(window_, &client);
        ShowBar(SB_HORZ, least.cx, client.right);
        GetClientRect(window_, &client);
        ShowBar(SB_VERT, least.cy, client.bottom);
    }
    GetClientRect(window_, &client);
    Layout(std::max<int>(client.right, least.cx), std::max<int>(client.bottom, least.cy));
    layingOut_ = false;
    // What a control leaves behind, and what is copied along with it, is drawn anew.
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void Form::ShowBar(int bar, int needed, int shown) {
    LONG& position = bar == SB_VERT ? scrolled_.y : scrolled_.x;
    const bool wanted = needed > shown;
    position = wanted ? std::clamp<LONG>(position, 0, needed - shown) : 0;
    const LONG_PTR style = bar == SB_VERT ? WS_VSCROLL : WS_HSCROLL;
    const bool present = (GetWindowLongPtrW(window_, GWL_STYLE) & style) != 0;
    if (wanted != present) ShowScrollBar(window_, bar, wanted);
    if (!wanted) return;
    SCROLLINFO info{sizeof info, SIF_RANGE | SIF_PAGE | SIF_POS, 0, needed - 1, static_cast<UINT>(shown), position, 0};
    SetScrollInfo(window_, bar, &info, TRUE);
}

void Form::ScrollBy(int bar, int pixels) {
    (bar == SB_VERT ? scrolled_.y : scrolled_.x) += pixels;
    LayoutNow();
}

std::optional<LRESULT> Form::ScrollMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const int step = kLineHeights * metrics_->LineHeight();
    if (message == WM_MOUSEWHEEL && (GetWindowLongPtrW(window_, GWL_STYLE) & WS_VSCROLL) != 0) {
        ScrollBy(SB_VERT, -MulDiv(static_cast<short>(HIWORD(wParam)), step, WHEEL_DELTA));
        return 0;
    }
    if ((message != WM_VSCROLL && message != WM_HSCROLL) || lParam != 0) return std::nullopt;
    const int bar = message == WM_VSCROLL ? SB_VERT : SB_HORZ;
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    GetScrollInfo(window_, bar, &info);
    switch (LOWORD(wParam)) {
    case SB_LINEUP:
        ScrollBy(bar, -step);
        break;
    case SB_LINEDOWN:
        ScrollBy(bar, step);
        break;
    case SB_PAGEUP:
        ScrollBy(bar, -static_cast<int>(info.nPage));
        break;
    case SB_PAGEDOWN:
        ScrollBy(bar, static_cast<int>(info.nPage));
        break;
    case SB_TOP:
        ScrollBy(bar, info.nMin - info.nPos);
        break;
    case SB_BOTTOM:
        ScrollBy(bar, info.nMax - info.nPos);
        break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        ScrollBy(bar, info.nTrackPos - info.nPos);
        break;
    default:
        break;
    }
    return 0;
}

// Who works by keyboard sees the control that has it.
void Form::FollowFocus() {
    if (window_ == nullptr) return;
    const HWND control = ControlOf(window_, GetFocus());
    if (control == nullptr || control == followed_) return;
    followed_ = control;
    RECT box{};
    RECT client{};
    GetWindowRect(control, &box);
    MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&box), 2);
    GetClientRect(window_, &client);
    const int down = box.bottom > client.bottom ? static_cast<int>(std::min(box.bottom - client.bottom, box.top)) : 0;
    const int right = box.right > client.right ? static_cast<int>(std::min(box.right - client.right, box.left)) : 0;
    scrolled_.y += box.top < 0 ? static_cast<int>(box.top) : down;
    scrolled_.x += box.left < 0 ? static_cast<int>(box.left) : right;
    if (box.top < 0 || down > 0 || box.left < 0 || right > 0) LayoutNow();
}

} // namespace quorvex::dialogs
