#include "OrvUI/HomeModels.h"
#include "OrvUI/Notifications.h"
#include "OrvUI/PortGuesses.h"
#include "tests/support/TestSupport.h"

#include <gtest/gtest.h>

using namespace orv;
using namespace Qt::StringLiterals;

namespace {

const ServiceID web{u"/p/shop"_s, ServiceKind::frontend, u"/p/shop/web"_s};
const ServiceID api{u"/p/shop"_s, ServiceKind::backend, u"/p/shop/api"_s};

const QStringList parts{u""_s, u", logs "_s, u", agents"_s, u", terminal "_s};

/// "title / body / project / url, part".
QString shown(const std::optional<NotificationRequest>& request) {
    return request
               ? QStringList{request->title, request->body, request->projectID.value_or(u"-"_s), request->openURL.value_or(u"-"_s)}
                         .join(u" / "_s) +
                     parts.at(static_cast<qsizetype>(request->part.kind)) + request->part.key
               : u"nothing"_s;
}

} // namespace

TEST(NotificationPlanner, TellsWhatIsWanted) {
    struct Case {
        NotificationEvent event;
        bool NotificationPrefs::* wanted;
        QString request;
    };
    const std::vector<Case> cases{
        {ServiceReady{u"shop"_s, web, 5173}, &NotificationPrefs::ready,
         u"shop is ready / Frontend is running on localhost:5173. / /p/shop / http://localhost:5173"_s},
        {ServiceReady{u"shop"_s, api, {}}, &NotificationPrefs::ready,
         u"shop is ready / Backend is running. / /p/shop / -"_s},
        {ServiceCrashed{u"shop"_s, api, u"Exited with code 1: boom"_s}, &NotificationPrefs::crash,
         u"shop stopped unexpectedly / Backend: Exited with code 1: boom / /p/shop / -, logs "_s +
             HomeModels::key(api)},
        {ProjectAdded{u"shop"_s, u"/p/shop"_s, true}, &NotificationPrefs::added,
         u"shop was cloned / It's in your projects folder, ready to open. / /p/shop / -"_s},
        {ProjectAdded{u"shop"_s, u"/p/shop"_s, false}, &NotificationPrefs::added,
         u"shop was created / It's in your projects folder, ready to open. / /p/shop / -"_s},
        {AgentFinished{u"shop"_s, u"/p/shop"_s, u"Codex"_s, true, u"All set"_s}, &NotificationPrefs::agents,
         u"Codex finished in shop / All set / /p/shop / -, agents"_s},
        {AgentFinished{u"shop"_s, u"/p/shop"_s, u"Codex"_s, true, {}}, &NotificationPrefs::agents,
         u"Codex finished in shop / The task is done. / /p/shop / -, agents"_s},
        {AgentFinished{u"shop"_s, u"/p/shop"_s, u"Codex"_s, false, {}}, &NotificationPrefs::agents,
         u"Codex couldn't finish in shop / It stopped before finishing. / /p/shop / -, agents"_s},
    };
    AppSettings settings;
    settings.notificationsEnabled = true;
    const NotificationPrefs on = NotificationPrefs::of(settings);
    for (const Case& row : cases) {
        EXPECT_EQ(shown(NotificationPlanner::request(row.event, on, false)), row.request);
        EXPECT_EQ(NotificationPlanner::request(row.event, on, true), std::nullopt) << row.request.toStdString();
        NotificationPrefs always = on;
        always.onlyInBackground = false;
        EXPECT_EQ(shown(NotificationPlanner::request(row.event, always, true)), row.request);
        NotificationPrefs without = on;
        without.*row.wanted = false;
        EXPECT_EQ(NotificationPlanner::request(row.event, without, false), std::nullopt) << row.request.toStdString();
        EXPECT_EQ(NotificationPlanner::request(row.event, {}, false), std::nullopt) << row.request.toStdString();
    }
    const auto first = NotificationPlanner::request(ServiceReady{u"shop"_s, web, 80}, on, false);
    const auto corrected = NotificationPlanner::request(ServiceReady{u"shop"_s, web, 81, true}, on, false);
    ASSERT_TRUE(first && corrected);
    EXPECT_EQ(first->subject, corrected->subject);
    EXPECT_TRUE(corrected->replaces && !first->replaces);
}

TEST(ServiceTransitions, TellOncePerStartThatAServiceIsReadyAndOfEveryCrash) {
    const auto running = [](std::optional<int> port) { return ServiceState::running(port); };
    const ServiceState starting = ServiceState::starting();
    const ServiceState failed = ServiceState::failed(u"boom"_s);
    struct Step {
        const char* label;
        ServiceState state;
        std::optional<int> port;
        bool wasUserStopped;
        QString events; ///< "ready 80", "crashed boom"
    };
    const std::vector<Step> steps{
        {"starts", starting, {}, false, u""_s},
        {"is up, where is not known", running({}), {}, false, u""_s},
        {"is found listening", running({}), 80, false, u"ready 80"_s},
        {"announces another port", running(81), 81, false, u""_s},
        {"is lost", running(81), {}, false, u""_s},
        {"and found again", running(81), 81, false, u""_s},
        {"crashes", failed, {}, false, u"crashed boom"_s},
        {"stays so", failed, {}, false, u""_s},
        {"starts again", starting, {}, false, u""_s},
        {"is up again", running(80), 80, false, u"ready 80"_s},
        {"fails as asked", failed, {}, true, u""_s},
        {"stops", ServiceState::stopped(), {}, true, u""_s},
        {"is up at once", running(80), 80, false, u"ready 80"_s},
        {"stops again", ServiceState::stopped(), {}, true, u""_s},
        {"listens without a word", starting, 80, false, u"ready 80"_s},
        {"says where", running(80), 80, false, u""_s},
    };
    ServiceTransitions transitions;
    for (const Step& step : steps) {
        QStringList events;
        const QList<ServiceTransitions::Look> looks{
            {api, starting, u"shop"_s, {}, false}, {web, step.state, u"shop"_s, step.port, step.wasUserStopped}};
        for (const NotificationEvent& event : transitions.update(looks)) {
            const auto* ready = std::get_if<ServiceReady>(&event);
            events
                << (ready ? u"ready %1"_s.arg(ready->port.value_or(0))
                          : u"crashed "_s + std::get<ServiceCrashed>(event).reason);
            EXPECT_EQ(ready ? ready->id : std::get<ServiceCrashed>(event).id, web);
        }
        EXPECT_EQ(events.join(u", "_s), step.events) << step.label;
    }
}

TEST(PortGuesses, HoldBackWhatNoOutputNames) {
    using Port = std::optional<int>;
    struct Step {
        const char* label;
        Port port;
        bool isGuess;
        Port trusted; ///< before the look
        PortGuesses::Verdict verdict;
    };
    const std::vector<Step> steps{
        {"nothing is known", {}, false, {}, {}},
        {"something listens", 30000, true, {}, {{}, true, false}},
        {"still", 30000, true, {}, {{}, false, false}},
        {"something else does, too", 3311, true, {}, {{}, true, false}},
        {"the first one's time is over", 3311, true, 30000, {{}, false, false}},
        {"that of this one", 3311, true, 3311, {3311, false, false}},
        {"lost for a moment", {}, false, {}, {}},
        {"and found again", 3311, true, {}, {3311, false, false}},
        {"the output names another", 3312, false, {}, {3312, false, true}},
        {"and names it again", 3312, false, {}, {3312, false, false}},
        {"lost once more, then found", 3313, true, {}, {{}, true, false}},
        {"named in time", 3313, false, {}, {3313, false, false}},
        {"whose time comes after that", 3313, false, 3313, {3313, false, false}},
    };
    PortGuesses guesses;
    for (const auto& [label, port, isGuess, trusted, verdict] : steps) {
        if (trusted) {
            guesses.trust(web, *trusted);
        }
        EXPECT_EQ(guesses.look(web, port, isGuess), verdict) << label;
    }
}
