// Renders every view in every state to pictures:
// velloro_screenshots FOLDER light|dark|large-text [SCENE...]

#include "Base/StringLiterals.h"
#include "Scene.h"

#include <QApplication>
#include <QDir>
#include <QTextStream>

using namespace Velloro;

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 3) {
        QTextStream(stderr)
            << "Usage: velloro_screenshots FOLDER light|dark|large-text [SCENE...]\n";
        return 2;
    }
    const QDir folder(arguments[1]);
    const bool dark = arguments[2] == u"dark"_s;
    const bool largeText = arguments[2] == u"large-text"_s;
    const QStringList wanted = arguments.mid(3);
    int status = 0;
    const QList<Scene> scenes = symbolScenes() + controlScenes() + recordingPillScenes()
        + menuBarScenes() + paneScenes() + settingsScenes() + onboardingScenes();
    for (const Scene &scene : scenes) {
        if (!wanted.isEmpty() && !wanted.contains(scene.name))
            continue;
        Stage stage;
        stage.memory.appearance->dark = dark;
        if (largeText)
            stage.memory.appearance->scale = 1.5;
        const QImage picture = scene.take(stage);
        const QString path = folder.filePath(scene.name + u".png"_s);
        if (picture.isNull() || !picture.save(path)) {
            QTextStream(stderr) << "No picture of " << scene.name << '\n';
            status = 1;
        }
    }
    return status;
}
