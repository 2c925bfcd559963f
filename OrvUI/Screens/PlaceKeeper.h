#pragma once

#include "OrvUI/Screens/WindowState.h"

#include <QObject>

namespace orv {

class AppModel;

/// What is open in the window, from one run of the application to the next: the page, its agent panel, folders,
/// terminals, which output is looked at. Lives on the main thread.
class PlaceKeeper : public QObject {
    Q_OBJECT
public:
    enum class Page { asItWas, another };

    explicit PlaceKeeper(AppModel& model, QObject* parent = nullptr);

    /// Opens what was open. The page comes once its project is found again, unless another one has been opened by then
    /// or somebody types just then.
    void restore(const WindowState& last, Page page);
    /// Puts what is open now into the state.
    void store(WindowState& state) const;

Q_SIGNALS:
    /// Something was opened or closed.
    void changed();

private:
    void showPage(const WindowState& last);

    AppModel& m_model;
    bool m_isPageDue = false; ///< that of the last time is not found again yet
};

} // namespace orv
