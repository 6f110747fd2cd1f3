#pragma once

#include "Base/StringLiterals.h"
#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Support/InMemoryPlatform.h"
#include "Views/WindowProbe.h"
#include "Views/Windows/ViewEngine.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace Velloro {

/// A window of the program over the platform in memory; `Controller` makes and keeps it.
template <typename Controller>
class WindowTestBase : public ::testing::Test
{
protected:
    /// Opens the window and waits until it has the focus.
    void open()
    {
        controller.open();
        ASSERT_TRUE(window());
        ASSERT_TRUE(QTest::qWaitForWindowActive(window()));
    }
    [[nodiscard]] QQuickWindow *window() const { return controller.window(); }
    [[nodiscard]] WindowProbe probe() const { return WindowProbe(window()); }
    /// What the item with this object name says.
    [[nodiscard]] QString text(const QString &name) const
    {
        QQuickItem *item = probe().item(name);
        return item ? item->property("text").toString() : u"(none)"_s;
    }

    // The recogniser looks for real files of models.
    QTemporaryDir directory;
    InMemoryPlatform memory;
    const bool isOnDisk = memory.fileSystem->supportDirectory.emplace(directory.path()).size() > 0;
    AppState appState{memory.platform};
    std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(memory.platform);
    ViewEngine engine{*memory.appearance};
    Controller controller{memory.platform, appState, *hotkeyManager, engine};
};

} // namespace Velloro
