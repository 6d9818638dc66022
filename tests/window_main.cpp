// Runs tests of windows that are worked by events.
#include <gtest/gtest.h>
#include <wx/evtloop.h>
#include <wx/wx.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    wxApp::SetInstance(new wxApp);
    wxInitializer initializer(argc, argv);
    wxGUIEventLoop loop;
    wxEventLoopActivator active(&loop);
    return RUN_ALL_TESTS();
}
