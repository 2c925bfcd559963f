#include "Dialogs.h"

#include "OrvCore/Paths.h"
#include "OrvUI/AppModel.h"
#include "OrvUI/LogModel.h"
#include "OrvUI/OnboardingModel.h"
#include "OrvUI/ServiceLogs.h"
#include "WidgetPalette.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QWindow>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

QString text(const char* words) {
    return QCoreApplication::translate("Dialogs", words);
}

QFileDialog* newDialog(const QString& title) {
    auto* dialog = new QFileDialog(nullptr, title);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setPalette(WidgetPalette::ofTheme());
    return dialog;
}

void show(QFileDialog* dialog, QWindow& over) {
    dialog->winId(); // makes the window that the next line speaks of
    dialog->windowHandle()->setTransientParent(&over);
    dialog->setWindowModality(Qt::ApplicationModal);
    dialog->show();
}

} // namespace

void Dialogs::chooseFolder(QWindow& over, AppModel& model) {
    QFileDialog* dialog = newDialog(text(QT_TRANSLATE_NOOP("Dialogs", "Choose the folder of your projects")));
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    OnboardingModel& onboarding = *model.onboarding();
    const bool isForOnboarding = model.needsOnboarding();
    const QString current = isForOnboarding ? onboarding.folder() : model.settings().settings().scanRoot;
    const bool isThere = QFileInfo(current).isDir();
    dialog->setDirectory(isThere ? QFileInfo(current).path() : Paths::realHome());
    if (isThere) {
        dialog->selectFile(current);
    }
    if (isForOnboarding) {
        QObject::connect(dialog, &QFileDialog::fileSelected, &onboarding, [&onboarding](const QString& folder) {
            onboarding.setFolder(folder);
            onboarding.scanFolder();
        });
    } else {
        QObject::connect(dialog, &QFileDialog::fileSelected, &model, &AppModel::chooseScanRoot);
    }
    show(dialog, over);
}

void Dialogs::saveLogs(QWindow& over, AppModel& model) {
    QFileDialog* dialog = newDialog(text(QT_TRANSLATE_NOOP("Dialogs", "Save the output")));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDirectory(Paths::realHome());
    dialog->setDefaultSuffix(u"log"_s);
    const Project* project = model.project(model.logs()->projectID());
    dialog->selectFile((project != nullptr ? project->name : u"output"_s) + u".log"_s);
    QObject::connect(dialog, &QFileDialog::fileSelected, &model, [&model](const QString& file) {
        const QString problem = model.logs()->lines()->save(file);
        model.showStatus(
            problem.isEmpty() ? text(QT_TRANSLATE_NOOP("Dialogs", "Saved %1")).arg(Paths::shortened(file))
                              : text(QT_TRANSLATE_NOOP("Dialogs", "Couldn't save the output: %1")).arg(problem),
            !problem.isEmpty());
    });
    show(dialog, over);
}

} // namespace orv
