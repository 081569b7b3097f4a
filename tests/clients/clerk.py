"""The person at the screen: works the component's dialogs with pywinauto, told by their captions what to do.

    clerk.py             until it is ended: "Pick" picks the second address, "Advanced" finds the street KILN HILL in ABERDEEN
                         and takes its first address, "Update" downloads updates
    clerk.py impatient   stops every search and closes the dialog

Message boxes are answered with OK. Prints "ready" when it is at its place.
"""
import sys
import time

sys.modules["comtypes"] = None  # pywinauto's other backend wants a type library that Wine lacks
import commctrl  # noqa: E402
import win32con  # noqa: E402
from pywinauto import Desktop  # noqa: E402
from pywinauto.timings import Timings  # noqa: E402

Timings.fast()
MESSAGE_TEXT = 0xFFFF


def control(window, number):
    return next(child for child in window.children() if child.control_id() == number)


def press(button):
    """Posted, since what a button opens may be modal."""
    if button.is_enabled():
        button.post_message(win32con.BM_CLICK)


def pick(window):
    """In two looks, since the dialog highlights the first address when the search has ended."""
    addresses = control(window, 104)
    if addresses.item_count() >= 2 and control(window, 108).window_text() == "&Select":
        if addresses.send_message(win32con.LB_GETCURSEL) == 1:
            press(control(window, 108))
        else:
            addresses.select(1)


def advanced(window):
    tree, find, street = control(window, 127), control(window, 124), control(window, 112)
    if tree.is_visible():
        line = tree.roots()[0].children()[0]
        tree.send_message(commctrl.TVM_SELECTITEM, commctrl.TVGN_CARET, line.elem)
        tree.post_message(win32con.WM_KEYDOWN, win32con.VK_SPACE)
    elif not street.window_text():
        street.set_edit_text("KILN HILL")
    elif not find.is_enabled() and control(window, 113).item_count() > 0:
        control(window, 113).select("ABERDEEN")
    elif find.window_text() == "&Find":
        press(find)


def stop(window):
    if control(window, 102).window_text() == "STOP":
        press(control(window, 102))


def close(window):
    window.close()


def update(window):
    press(control(window, 101))


WORK = {"Pick": pick, "Advanced": advanced, "Update": update}
IMPATIENT = {"Searching": stop, "Found nothing": close}


def work_on(window, work):
    if not window.is_visible():
        return
    text = [child.window_text() for child in window.children() if child.control_id() == MESSAGE_TEXT]
    if text:
        print("message:", text[0], file=sys.stderr, flush=True)
        press(window.children(class_name="Button")[0])
        return
    for word, action in work.items():
        if word in window.window_text():
            action(window)


def main():
    print("ready", flush=True)
    work = IMPATIENT if "impatient" in sys.argv else WORK
    said = ""
    while True:
        try:
            for window in Desktop(backend="win32").windows(class_name="#32770"):
                work_on(window, work)
        except Exception as error:  # a window may go at any time
            if said != repr(error):
                print("clerk:", repr(error), file=sys.stderr, flush=True)
            said = repr(error)
        time.sleep(0.1)


if __name__ == "__main__":
    main()
