#pragma once

#include "Models/WhisperModelInfo.h"
#include "Views/Shared/ModelFileViewModel.h"

namespace Velloro {

/// One row of the model catalogue with its file, and whether it is the loaded one. Main thread
/// only.
class CatalogModelRowViewModel : public Velloro::ModelFileViewModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("Made by the models pane's model")
    Q_PROPERTY(QString displayName READ displayName CONSTANT)
    /// The word on the row's badge, or empty.
    Q_PROPERTY(QString badgeText READ badgeText CONSTANT)
    Q_PROPERTY(bool isEnglishOnly READ isEnglishOnly CONSTANT)
    Q_PROPERTY(QString fileSizeText READ fileSizeText CONSTANT)
    Q_PROPERTY(int accuracyStars READ accuracyStars CONSTANT)
    Q_PROPERTY(int speedStars READ speedStars CONSTANT)
    Q_PROPERTY(bool isSelected READ isSelected NOTIFY isSelectedChanged)

public:
    /// `info` is a row of the catalogue; `appState` outlives the model.
    CatalogModelRowViewModel(const WhisperModelInfo &info, AppState &appState,
                             QObject *parent = nullptr);

    [[nodiscard]] QString displayName() const { return m_info.displayName; }
    [[nodiscard]] QString badgeText() const { return m_info.badgeText().value_or(QString()); }
    [[nodiscard]] bool isEnglishOnly() const { return m_info.englishOnly; }
    [[nodiscard]] QString fileSizeText() const { return m_info.fileSizeFormatted(); }
    [[nodiscard]] int accuracyStars() const { return m_info.accuracyStars; }
    [[nodiscard]] int speedStars() const { return m_info.speedStars; }
    [[nodiscard]] bool isSelected() const { return m_isSelected; }
    [[nodiscard]] const WhisperModelInfo &info() const { return m_info; }

    /// Loads the model; that it can't be is ignored.
    Q_INVOKABLE void select();

Q_SIGNALS:
    void isSelectedChanged();

private:
    void updateSelection();

    const WhisperModelInfo &m_info;
    bool m_isSelected = false;
};

} // namespace Velloro
