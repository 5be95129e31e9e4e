#include "platform/CommandRouter.h"

#include <QAction>
#include <QWidget>

#include <gtest/gtest.h>

#include <functional>
#include <map>

using namespace lanmira;

namespace {

class Target final : public CommandTarget {
public:
    std::map<int, std::function<void(CommandState&)>> rules;
    std::vector<int> ran;
    bool onCommand(int id) override {
        if (!rules.contains(id))
            return false;
        ran.push_back(id);
        return true;
    }
    bool onUpdateCommand(int id, CommandState& s) override {
        const auto it = rules.find(id);
        if (it == rules.end())
            return false;
        it->second(s);
        return true;
    }
};

} // namespace

TEST(CommandRouter, FirstTargetThatClaimsACommandDecidesAndUnclaimedOnesAreDisabled) {
    QWidget window;
    CommandRouter router(&window);
    Target view, app;
    bool viewEnabled = false;
    bool checked = false;
    view.rules[1] = [&](CommandState& s) { s.enabled = viewEnabled; };
    app.rules[1] = [](CommandState&) {};
    app.rules[2] = [&](CommandState& s) { s.setCheck(checked); };
    router.setTargets({&view, &app});

    QAction* one = router.action(1);
    QAction* two = router.action(2);
    QAction* none = router.action(3);
    EXPECT_FALSE(one->isEnabled()); // the view claims it and says no; the app is not asked
    EXPECT_FALSE(none->isEnabled());
    EXPECT_TRUE(two->isCheckable());
    EXPECT_FALSE(two->isChecked());

    // A disabled command never runs, even when triggered before the state was refreshed.
    EXPECT_FALSE(router.dispatch(1));
    EXPECT_TRUE(view.ran.empty());
    viewEnabled = true;
    checked = true;
    router.updateActions(); // what opening the menu or the idle refresh does
    one->trigger();
    EXPECT_EQ(view.ran, std::vector<int>{1});
    EXPECT_TRUE(app.ran.empty());
    EXPECT_TRUE(two->isChecked());
    // Every command refreshes every action.
    checked = false;
    router.dispatch(1);
    EXPECT_FALSE(two->isChecked());
    EXPECT_EQ(router.action(1), one);
}
