#pragma once

#include <QAbstractListModel>
#include <QObject>
#include <QPointer>

Q_MOC_INCLUDE("OrvUI/AppModel.h")

namespace orv {

class AppModel;

/// The projects of the home page in the folders in which they lie, and what can be done with a folder. Lives on the
/// main thread.
class FolderTree : public QObject {
    Q_OBJECT
    Q_PROPERTY(orv::AppModel* model READ model WRITE setModel NOTIFY modelChanged FINAL)
    /// Empty while the home page shows cards.
    Q_PROPERTY(QAbstractListModel* rows READ rows NOTIFY modelChanged FINAL)
    /// Whether there was no such folder as the scanned one when it was looked at last.
    Q_PROPERTY(bool isRootMissing READ isRootMissing NOTIFY rootLookedAt FINAL)

public:
    using QObject::QObject;

    [[nodiscard]] AppModel* model() const;
    void setModel(AppModel* model);
    [[nodiscard]] QAbstractListModel* rows() const;
    [[nodiscard]] bool isRootMissing() const;

    Q_INVOKABLE void setOpen(const QString& path, bool isOpen);
    /// In the desktop's file manager.
    Q_INVOKABLE void show(const QString& path);
    Q_INVOKABLE void openTerminal(const QString& path);

Q_SIGNALS:
    void modelChanged();
    void rootLookedAt();

private:
    QPointer<AppModel> m_model;
};

} // namespace orv
