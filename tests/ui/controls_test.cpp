#include <gtest/gtest.h>

#include "nvk/afx/frame_window.h"
#include "nvk/afx/list_controls.h"
#include "nvk/platform/combo_box_table.h"
#include "nvk/platform/list_fill.h"
#include "nvk/platform/status_text.h"
#include "os/api/error.h"
#include "os/api/menu.h"
#include "os/api/window.h"

namespace {

using namespace nvk::os;

CString Item(const CComboBox& box, int index) {
    CString text;
    box.GetLBText(index, text);
    return text;
}

TEST(ListControls, AnswerTheirMessages) {
    CFrameWnd frame;
    ASSERT_TRUE(frame.Create(nullptr, "frame"));
    CListBox list;
    ASSERT_TRUE(list.Create(WS_CHILD, RECT{}, &frame, 7));
    EXPECT_EQ(GetDlgItem(frame.m_hWnd, 7), list.m_hWnd);
    EXPECT_EQ(list.GetParent(), &frame);

    FillListBox(list, "a;b;", ';');
    EXPECT_EQ(list.GetCount(), 3);
    CString text;
    list.GetText(2, text);
    EXPECT_EQ(text, "");
    EXPECT_EQ(list.InsertString(0, "z"), 0);
    EXPECT_EQ(list.FindStringExact(-1, "B"), 2);
    EXPECT_EQ(list.SetCurSel(2), 2);
    EXPECT_EQ(list.DeleteString(0), 3);
    EXPECT_EQ(list.GetCurSel(), 1);
    EXPECT_EQ(list.SetCurSel(3), LB_ERR);
    EXPECT_EQ(list.SetCurSel(-1), LB_ERR);
    EXPECT_EQ(list.GetCurSel(), LB_ERR);
    EXPECT_EQ(list.SetItemData(0, 42), TRUE);
    EXPECT_EQ(list.GetItemData(0), 42u);
    EXPECT_EQ(static_cast<LRESULT>(list.GetItemData(9)), LB_ERR);

    // Only a child takes an identifier: any other window would take it
    // for a menu.
    CComboBox combo;
    EXPECT_FALSE(combo.Create(CBS_DROPDOWNLIST, RECT{}, &frame, 8));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MENU_HANDLE);
    ASSERT_TRUE(combo.Create(WS_CHILD | CBS_DROPDOWNLIST, RECT{}, &frame, 8));
    FillComboBox(combo, "", '|');
    EXPECT_EQ(combo.GetCount(), 1);
    combo.ResetContent();
    FillComboBox(combo, "un|deux|", '|');
    EXPECT_EQ(combo.GetCount(), 3);
    EXPECT_EQ(Item(combo, 1), "deux");
    EXPECT_EQ(Item(combo, 2), "");

    // Destroying the frame takes its children and frees the objects'
    // handles.
    frame.DestroyWindow();
    EXPECT_EQ(list.m_hWnd, nullptr);
    EXPECT_FALSE(IsWindow(reinterpret_cast<HWND>(combo.GetSafeHwnd())));
    EXPECT_EQ(SendMessageA(nullptr, LB_GETCOUNT, 0, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
}

TEST(ComboBoxTable, SelectsByTableIndexAlsoFromOutside) {
    CFrameWnd frame;
    ASSERT_TRUE(frame.Create(nullptr, "frame"));
    CComboBoxTable combo;
    ASSERT_TRUE(combo.Create(WS_CHILD | CBS_DROPDOWNLIST, RECT{}, &frame, 9));
    EXPECT_FALSE(combo.Init("", '|', '\n'));
    ASSERT_TRUE(combo.Init("3|trois\nquatre\ncinq\nsix\nsept\nhuit", '|', '\n'));
    // Base 3 and five separators: the indices are 3 and 4 only.
    ASSERT_EQ(combo.GetCount(), 2);
    EXPECT_EQ(Item(combo, 1), "quatre");
    EXPECT_EQ(combo.GetItemData(1), 4u);

    EXPECT_EQ(combo.SetCurSel(4), 4);
    EXPECT_EQ(combo.GetCurSel(), 4);
    // The messages from outside speak table indices too, and reach the
    // control without coming back to the map.
    EXPECT_EQ(SendMessageA(combo.m_hWnd, CB_GETCURSEL, 0, 0), 4);
    EXPECT_EQ(SendMessageA(combo.m_hWnd, CB_SETCURSEL, 3, 0), 3);
    EXPECT_EQ(combo.GetCurSel(), 3);
    EXPECT_EQ(static_cast<CComboBox&>(combo).SetCurSel(4), 4);

    // An absent value clears the selection and answers the base less one.
    EXPECT_EQ(combo.SetCurSel(7), 2);
    EXPECT_EQ(SendMessageA(combo.m_hWnd, CB_GETCURSEL, 0, 0), CB_ERR);

    combo.Disable();
    EXPECT_FALSE(combo.IsWindowEnabled());
    combo.Enable();
    EXPECT_TRUE(combo.IsWindowEnabled());

    // Without a window only the table is filled.
    CComboBoxTable early("a\nb");
    EXPECT_EQ(early.GetTable().GetMaxIndex(), 1);
    EXPECT_EQ(early.SetCurSel(1), -1);
}

class StatusTextTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_Frame.Create(nullptr, "frame"));
        ASSERT_TRUE(m_Bar.Create(&m_Frame));
        m_Bar.SetWindowText("Prêt");
        AfxGetThread()->m_pMainWnd = &m_Frame;
    }
    void TearDown() override { AfxGetThread()->m_pMainWnd = nullptr; }

    CString Bar() const {
        CString text;
        m_Bar.GetWindowText(text);
        return text;
    }

    CFrameWnd m_Frame;
    CStatusBar m_Bar;
};

TEST_F(StatusTextTest, GuardsTheBarsText) {
    EXPECT_EQ(m_Frame.GetControlBar(AFX_IDW_STATUS_BAR), &m_Bar);
    {
        CStatusText guard("Calcul...");
        EXPECT_EQ(Bar(), "Calcul...");
        guard.SetText("Calcul 2...");
        EXPECT_EQ(Bar(), "Calcul 2...");
        EXPECT_EQ(CString(guard), "Prêt");
    }
    EXPECT_EQ(Bar(), "Prêt");
    {
        CStatusText guard("Copie");
        guard.Restore();
        EXPECT_EQ(Bar(), "Prêt");
    }
    // Restored by hand, the guard clears the bar when it ends.
    EXPECT_EQ(Bar(), "");
}

TEST_F(StatusTextTest, DoesNothingWithoutAStatusBar) {
    AfxGetThread()->m_pMainWnd = nullptr;
    {
        CStatusText guard("ailleurs");
        EXPECT_TRUE(guard.IsEmpty());
    }
    EXPECT_EQ(Bar(), "Prêt");
}

}  // namespace
