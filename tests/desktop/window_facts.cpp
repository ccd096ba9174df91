#include "tests/desktop/window_facts.h"

#include <vector>

#include "tests/desktop/json_text.h"
#include "tests/desktop/request.h"

namespace {

constexpr UINT kAnswerLimitMilliseconds = 60000;

std::string HandleNumber(HWND window) {
    return JsonNumber(reinterpret_cast<INT_PTR>(window));
}

std::string Numbers(std::initializer_list<LONG> values) {
    std::vector<std::string> texts;
    for (const LONG value : values) {
        texts.push_back(JsonNumber(value));
    }
    return JsonList(texts);
}

std::wstring ClassNameOf(HWND window) {
    wchar_t name[256] = {};
    GetClassNameW(window, name, 256);
    return name;
}

std::wstring CaptionOf(HWND window) {
    wchar_t caption[512] = {};
    GetWindowTextW(window, caption, 512);
    return caption;
}

std::string PlaceInParent(HWND window, RECT rect) {
    const bool isChild = (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
    if (isChild) {
        MapWindowPoints(nullptr, GetParent(window), reinterpret_cast<POINT*>(&rect), 2);
    }
    return Numbers({rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top});
}

JsonObject Describe(HWND window, const std::wstring& text) {
    RECT rect = {};
    GetWindowRect(window, &rect);
    DWORD process = 0;
    const DWORD thread = GetWindowThreadProcessId(window, &process);
    const bool isChild = (GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD) != 0;
    JsonObject facts;
    facts.Add("handle", HandleNumber(window))
        .Add("class", JsonText(ClassNameOf(window)))
        .Add("text", JsonText(text))
        .Add("id", JsonNumber(isChild ? GetWindowLongPtrW(window, GWLP_ID) : 0))
        .Add("style", JsonNumber(static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE))))
        .Add("exstyle", JsonNumber(static_cast<DWORD>(GetWindowLongPtrW(window, GWL_EXSTYLE))))
        .Add("visible", JsonBool(IsWindowVisible(window) != FALSE))
        .Add("enabled", JsonBool(IsWindowEnabled(window) != FALSE))
        .Add("owner", HandleNumber(GetWindow(window, GW_OWNER)))
        .Add("parent", HandleNumber(isChild ? GetParent(window) : nullptr))
        .Add("menu", JsonBool(!isChild && GetMenu(window) != nullptr))
        .Add("process", JsonNumber(process))
        .Add("thread", JsonNumber(thread))
        .Add("rect", Numbers({rect.left, rect.top, rect.right, rect.bottom}))
        .Add("place", PlaceInParent(window, rect));
    return facts;
}

struct TopLevelSearch {
    DWORD process = 0;
    std::vector<std::string> found;
};

BOOL CALLBACK CollectTopLevel(HWND window, LPARAM parameter) {
    auto* search = reinterpret_cast<TopLevelSearch*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (search->process == 0 || process == search->process) {
        search->found.push_back(DescribeWindow(window));
    }
    return TRUE;
}

BOOL CALLBACK CollectDescendant(HWND window, LPARAM parameter) {
    reinterpret_cast<std::vector<std::string>*>(parameter)->push_back(
        Describe(window, ReadWindowText(window)).Text());
    return TRUE;
}

struct ItemMessages {
    UINT count;
    UINT textLength;
    UINT text;
};

std::string ReadItems(HWND control, const ItemMessages& messages) {
    std::vector<std::string> items;
    const LRESULT count = SendWithLimit(control, messages.count, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        const WPARAM index = static_cast<WPARAM>(i);
        const LRESULT length = SendWithLimit(control, messages.textLength, index, 0);
        std::wstring text(static_cast<size_t>(length < 0 ? 0 : length) + 1, L'\0');
        SendWithLimit(control, messages.text, index, reinterpret_cast<LPARAM>(text.data()));
        items.push_back(JsonText(text.c_str()));
    }
    return JsonList(items);
}

}  // namespace

LRESULT SendWithLimit(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    DWORD_PTR result = 0;
    if (SendMessageTimeoutW(window, message, wParam, lParam, SMTO_NORMAL, kAnswerLimitMilliseconds,
                            &result) == 0) {
        throw RequestError("window did not answer message " + std::to_string(message));
    }
    return static_cast<LRESULT>(result);
}

std::wstring ReadWindowText(HWND window) {
    const auto length = static_cast<size_t>(SendWithLimit(window, WM_GETTEXTLENGTH, 0, 0));
    std::wstring text(length + 1, L'\0');
    const LRESULT copied =
        SendWithLimit(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(static_cast<size_t>(copied));
    return text;
}

std::string DescribeWindow(HWND window) {
    return Describe(window, CaptionOf(window)).Text();
}

std::string ListTopLevelWindows(DWORD process) {
    TopLevelSearch search;
    search.process = process;
    EnumWindows(CollectTopLevel, reinterpret_cast<LPARAM>(&search));
    return JsonList(search.found);
}

std::string ListChildren(HWND parent) {
    std::vector<std::string> children;
    for (HWND child = GetWindow(parent, GW_CHILD); child != nullptr; child = GetWindow(child, GW_HWNDNEXT)) {
        children.push_back(Describe(child, ReadWindowText(child)).Text());
    }
    return JsonList(children);
}

std::string ListDescendants(HWND parent) {
    std::vector<std::string> descendants;
    EnumChildWindows(parent, CollectDescendant, reinterpret_cast<LPARAM>(&descendants));
    return JsonList(descendants);
}

std::string ListBoxItems(HWND listBox) {
    return ReadItems(listBox, {LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT});
}

std::string ComboBoxItems(HWND comboBox) {
    return ReadItems(comboBox, {CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT});
}

std::string DescribeEdit(HWND edit) {
    DWORD start = 0;
    DWORD end = 0;
    SendWithLimit(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    JsonObject facts;
    facts.Add("selection", Numbers({static_cast<LONG>(start), static_cast<LONG>(end)}))
        .Add("lines", JsonNumber(SendWithLimit(edit, EM_GETLINECOUNT, 0, 0)))
        .Add("firstVisibleLine", JsonNumber(SendWithLimit(edit, EM_GETFIRSTVISIBLELINE, 0, 0)))
        .Add("length", JsonNumber(SendWithLimit(edit, WM_GETTEXTLENGTH, 0, 0)));
    return facts.Text();
}
