#pragma once

#include "OrvUI/Screens/ThemeColors.h"

#include <QFont>
#include <QVariantList>

#include <array>
#include <optional>

class QJSEngine;
class QQmlEngine;

namespace orv {

/// The one place with a colour, a size of type, a length, a radius or a duration. A QML singleton; lives on the main
/// thread.
///
/// Enumerators that QML names begin with a capital letter, as QML asks. The base stands with its namespace, for the QML
/// type registration of Qt 6.4 takes the name as it is written here.
class Theme : public orv::ThemeColors {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    /// Index of ThemeID.
    Q_PROPERTY(int theme READ theme WRITE setTheme NOTIFY themeChanged FINAL)
    Q_PROPERTY(bool isDark READ isDark NOTIFY colorsChanged FINAL)
    /// The line around what is softly filled, in the colour of that: none, unless the contrast is to be higher.
    Q_PROPERTY(int softEdge READ softEdge NOTIFY colorsChanged FINAL)
    Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged FINAL)

    // Lengths and radii in logical pixels
    Q_PROPERTY(int hairline MEMBER hairline CONSTANT FINAL)
    Q_PROPERTY(int space2 MEMBER space2 CONSTANT FINAL)
    Q_PROPERTY(int space4 MEMBER space4 CONSTANT FINAL)
    Q_PROPERTY(int space6 MEMBER space6 CONSTANT FINAL)
    Q_PROPERTY(int space8 MEMBER space8 CONSTANT FINAL)
    Q_PROPERTY(int space10 MEMBER space10 CONSTANT FINAL)
    Q_PROPERTY(int space12 MEMBER space12 CONSTANT FINAL)
    Q_PROPERTY(int space16 MEMBER space16 CONSTANT FINAL)
    Q_PROPERTY(int space20 MEMBER space20 CONSTANT FINAL)
    Q_PROPERTY(int space24 MEMBER space24 CONSTANT FINAL)
    Q_PROPERTY(int space28 MEMBER space28 CONSTANT FINAL)
    Q_PROPERTY(int space32 MEMBER space32 CONSTANT FINAL)
    Q_PROPERTY(int space40 MEMBER space40 CONSTANT FINAL)
    Q_PROPERTY(int pagePadding MEMBER pagePadding CONSTANT FINAL)
    Q_PROPERTY(int pagePaddingNarrow MEMBER pagePaddingNarrow CONSTANT FINAL)
    Q_PROPERTY(int contentWidthLimit MEMBER contentWidthLimit CONSTANT FINAL)
    Q_PROPERTY(int gridGap MEMBER gridGap CONSTANT FINAL)
    Q_PROPERTY(int shelfGap MEMBER shelfGap CONSTANT FINAL)
    Q_PROPERTY(int cardHeight MEMBER cardHeight CONSTANT FINAL)
    Q_PROPERTY(int cardColumnWidth MEMBER cardColumnWidth CONSTANT FINAL)
    Q_PROPERTY(int runningItemHeight MEMBER runningItemHeight CONSTANT FINAL)
    Q_PROPERTY(int pinnedItemHeight MEMBER pinnedItemHeight CONSTANT FINAL)
    Q_PROPERTY(int panelInset MEMBER panelInset CONSTANT FINAL)
    Q_PROPERTY(int sidebarWidth MEMBER sidebarWidth CONSTANT FINAL)
    Q_PROPERTY(int sidebarWidthWide MEMBER sidebarWidthWide CONSTANT FINAL)
    Q_PROPERTY(int railWidth MEMBER railWidth CONSTANT FINAL)
    Q_PROPERTY(int railButtonWidth MEMBER railButtonWidth CONSTANT FINAL)
    Q_PROPERTY(int railButtonHeight MEMBER railButtonHeight CONSTANT FINAL)
    Q_PROPERTY(int narrowLimit MEMBER narrowLimit CONSTANT FINAL)
    Q_PROPERTY(int wideLimit MEMBER wideLimit CONSTANT FINAL)
    Q_PROPERTY(int minimumWidth MEMBER minimumWidth CONSTANT FINAL)
    Q_PROPERTY(int minimumHeight MEMBER minimumHeight CONSTANT FINAL)
    Q_PROPERTY(int defaultWidth MEMBER defaultWidth CONSTANT FINAL)
    Q_PROPERTY(int defaultHeight MEMBER defaultHeight CONSTANT FINAL)
    Q_PROPERTY(int titleZoneHeight MEMBER titleZoneHeight CONSTANT FINAL)
    Q_PROPERTY(int topBarHeight MEMBER topBarHeight CONSTANT FINAL)
    Q_PROPERTY(int crumbGap MEMBER crumbGap CONSTANT FINAL)
    Q_PROPERTY(int resizeEdge MEMBER resizeEdge CONSTANT FINAL)
    Q_PROPERTY(int sidebarRowHeight MEMBER sidebarRowHeight CONSTANT FINAL)
    Q_PROPERTY(int outlineRowHeight MEMBER outlineRowHeight CONSTANT FINAL)
    Q_PROPERTY(int outlineIndent MEMBER outlineIndent CONSTANT FINAL)
    Q_PROPERTY(int menuRowHeight MEMBER menuRowHeight CONSTANT FINAL)
    Q_PROPERTY(int menuWidth MEMBER menuWidth CONSTANT FINAL)
    Q_PROPERTY(int popoverWidth MEMBER popoverWidth CONSTANT FINAL)
    Q_PROPERTY(int popoverHeight MEMBER popoverHeight CONSTANT FINAL)
    Q_PROPERTY(int controlMini MEMBER controlMini CONSTANT FINAL)
    Q_PROPERTY(int controlSmall MEMBER controlSmall CONSTANT FINAL)
    Q_PROPERTY(int controlRegular MEMBER controlRegular CONSTANT FINAL)
    Q_PROPERTY(int splitWidth MEMBER splitWidth CONSTANT FINAL)
    Q_PROPERTY(int searchWidth MEMBER searchWidth CONSTANT FINAL)
    Q_PROPERTY(int searchWidthNarrow MEMBER searchWidthNarrow CONSTANT FINAL)
    Q_PROPERTY(int logToolsWidth MEMBER logToolsWidth CONSTANT FINAL)
    Q_PROPERTY(int sheetWidth MEMBER sheetWidth CONSTANT FINAL)
    Q_PROPERTY(int statusLineHeight MEMBER statusLineHeight CONSTANT FINAL)
    Q_PROPERTY(int statusLineLimit MEMBER statusLineLimit CONSTANT FINAL)
    Q_PROPERTY(int tooltipHeight MEMBER tooltipHeight CONSTANT FINAL)
    Q_PROPERTY(int tooltipLimit MEMBER tooltipLimit CONSTANT FINAL)
    Q_PROPERTY(int emptyWidth MEMBER emptyWidth CONSTANT FINAL)
    Q_PROPERTY(int emptyLift MEMBER emptyLift CONSTANT FINAL)
    Q_PROPERTY(int illustration MEMBER illustration CONSTANT FINAL)
    Q_PROPERTY(int iconTiny MEMBER iconTiny CONSTANT FINAL)
    Q_PROPERTY(int iconMini MEMBER iconMini CONSTANT FINAL)
    Q_PROPERTY(int iconSmall MEMBER iconSmall CONSTANT FINAL)
    Q_PROPERTY(int icon MEMBER icon CONSTANT FINAL)
    Q_PROPERTY(int iconLarge MEMBER iconLarge CONSTANT FINAL)
    Q_PROPERTY(int mark MEMBER mark CONSTANT FINAL)
    Q_PROPERTY(int dot MEMBER dot CONSTANT FINAL)
    Q_PROPERTY(int dotSmall MEMBER dotSmall CONSTANT FINAL)
    Q_PROPERTY(int dotHalo MEMBER dotHalo CONSTANT FINAL)
    Q_PROPERTY(int tileMini MEMBER tileMini CONSTANT FINAL)
    Q_PROPERTY(int badge MEMBER badge CONSTANT FINAL)
    Q_PROPERTY(int tileSmall MEMBER tileSmall CONSTANT FINAL)
    Q_PROPERTY(int tile MEMBER tile CONSTANT FINAL)
    Q_PROPERTY(int tileLarge MEMBER tileLarge CONSTANT FINAL)
    Q_PROPERTY(int avatar MEMBER avatar CONSTANT FINAL)
    Q_PROPERTY(int swatchSize MEMBER swatchSize CONSTANT FINAL)
    Q_PROPERTY(int progressHeight MEMBER progressHeight CONSTANT FINAL)
    Q_PROPERTY(int scrollBar MEMBER scrollBar CONSTANT FINAL)
    Q_PROPERTY(int focusWidth MEMBER focusWidth CONSTANT FINAL)
    Q_PROPERTY(int focusGap MEMBER focusGap CONSTANT FINAL)
    Q_PROPERTY(int haloWidth MEMBER haloWidth CONSTANT FINAL)
    Q_PROPERTY(int kindWidth MEMBER kindWidth CONSTANT FINAL)
    Q_PROPERTY(int bubble MEMBER bubble CONSTANT FINAL)
    Q_PROPERTY(qreal wheelSpeed MEMBER wheelSpeed CONSTANT FINAL)
    Q_PROPERTY(int sheetFoot MEMBER sheetFoot CONSTANT FINAL)
    Q_PROPERTY(int setupStepHeight MEMBER setupStepHeight CONSTANT FINAL)
    Q_PROPERTY(int terminalStrip MEMBER terminalStrip CONSTANT FINAL)
    Q_PROPERTY(int terminalTabMin MEMBER terminalTabMin CONSTANT FINAL)
    Q_PROPERTY(int terminalTabMax MEMBER terminalTabMax CONSTANT FINAL)
    Q_PROPERTY(int terminalPaddingX MEMBER terminalPaddingX CONSTANT FINAL)
    Q_PROPERTY(int terminalPaddingY MEMBER terminalPaddingY CONSTANT FINAL)
    Q_PROPERTY(int switchWidth MEMBER switchWidth CONSTANT FINAL)
    Q_PROPERTY(int switchHeight MEMBER switchHeight CONSTANT FINAL)
    Q_PROPERTY(int switchInset MEMBER switchInset CONSTANT FINAL)
    Q_PROPERTY(int settingRowHeight MEMBER settingRowHeight CONSTANT FINAL)
    Q_PROPERTY(int tabHeight MEMBER tabHeight CONSTANT FINAL)
    Q_PROPERTY(int settingsNavWidth MEMBER settingsNavWidth CONSTANT FINAL)
    Q_PROPERTY(int settingsWidth MEMBER settingsWidth CONSTANT FINAL)
    Q_PROPERTY(int serviceRowHeight MEMBER serviceRowHeight CONSTANT FINAL)
    Q_PROPERTY(int serviceItemHeight MEMBER serviceItemHeight CONSTANT FINAL)
    Q_PROPERTY(int portFieldWidth MEMBER portFieldWidth CONSTANT FINAL)
    Q_PROPERTY(int panelRowHeight MEMBER panelRowHeight CONSTANT FINAL)
    Q_PROPERTY(int panelHeadingHeight MEMBER panelHeadingHeight CONSTANT FINAL)
    Q_PROPERTY(int alertWidth MEMBER alertWidth CONSTANT FINAL)
    Q_PROPERTY(int alertIcon MEMBER alertIcon CONSTANT FINAL)
    Q_PROPERTY(int quickPanelWidth MEMBER quickPanelWidth CONSTANT FINAL)
    Q_PROPERTY(int quickPanelLimit MEMBER quickPanelLimit CONSTANT FINAL)
    Q_PROPERTY(int addSheetWidth MEMBER addSheetWidth CONSTANT FINAL)
    Q_PROPERTY(int agentPanelWidth MEMBER agentPanelWidth CONSTANT FINAL)
    Q_PROPERTY(int agentPanelWidthWide MEMBER agentPanelWidthWide CONSTANT FINAL)
    Q_PROPERTY(int composerBox MEMBER composerBox CONSTANT FINAL)
    Q_PROPERTY(int composerBoxPanel MEMBER composerBoxPanel CONSTANT FINAL)
    Q_PROPERTY(int agentListWidth MEMBER agentListWidth CONSTANT FINAL)
    Q_PROPERTY(int autonomyCardHeight MEMBER autonomyCardHeight CONSTANT FINAL)
    Q_PROPERTY(int gutter MEMBER gutter CONSTANT FINAL)
    Q_PROPERTY(int suggestionHeight MEMBER suggestionHeight CONSTANT FINAL)
    Q_PROPERTY(int suggestionPicture MEMBER suggestionPicture CONSTANT FINAL)
    Q_PROPERTY(int composerHeight MEMBER composerHeight CONSTANT FINAL)
    Q_PROPERTY(int taskRowHeight MEMBER taskRowHeight CONSTANT FINAL)
    Q_PROPERTY(int overviewOutput MEMBER overviewOutput CONSTANT FINAL)
    Q_PROPERTY(int sideWidth MEMBER sideWidth CONSTANT FINAL)
    Q_PROPERTY(int sideWidthWide MEMBER sideWidthWide CONSTANT FINAL)
    Q_PROPERTY(int headerTile MEMBER headerTile CONSTANT FINAL)
    Q_PROPERTY(int taskRound MEMBER taskRound CONSTANT FINAL)
    Q_PROPERTY(int taskRoundSmall MEMBER taskRoundSmall CONSTANT FINAL)
    Q_PROPERTY(int taskAgeWidth MEMBER taskAgeWidth CONSTANT FINAL)
    Q_PROPERTY(int listWidthLimit MEMBER listWidthLimit CONSTANT FINAL)
    Q_PROPERTY(int checkbox MEMBER checkbox CONSTANT FINAL)
    Q_PROPERTY(int fieldLarge MEMBER fieldLarge CONSTANT FINAL)
    Q_PROPERTY(int buttonDialog MEMBER buttonDialog CONSTANT FINAL)
    Q_PROPERTY(int modeSwatchWidth MEMBER modeSwatchWidth CONSTANT FINAL)
    Q_PROPERTY(int modeSwatchHeight MEMBER modeSwatchHeight CONSTANT FINAL)
    Q_PROPERTY(int themeSwatchWidth MEMBER themeSwatchWidth CONSTANT FINAL)
    Q_PROPERTY(int themeSwatchHeight MEMBER themeSwatchHeight CONSTANT FINAL)
    Q_PROPERTY(int gitColumn MEMBER gitColumn CONSTANT FINAL)
    Q_PROPERTY(int gitColumnNarrow MEMBER gitColumnNarrow CONSTANT FINAL)
    Q_PROPERTY(int gitColumnWide MEMBER gitColumnWide CONSTANT FINAL)
    Q_PROPERTY(int gitWideLimit MEMBER gitWideLimit CONSTANT FINAL)
    Q_PROPERTY(int gitRowHeight MEMBER gitRowHeight CONSTANT FINAL)
    Q_PROPERTY(int gitHeadingHeight MEMBER gitHeadingHeight CONSTANT FINAL)
    Q_PROPERTY(int gitHistoryHeight MEMBER gitHistoryHeight CONSTANT FINAL)
    Q_PROPERTY(int gitHistoryLimit MEMBER gitHistoryLimit CONSTANT FINAL)
    Q_PROPERTY(int commitTextHeight MEMBER commitTextHeight CONSTANT FINAL)
    Q_PROPERTY(int paneHeaderHeight MEMBER paneHeaderHeight CONSTANT FINAL)
    Q_PROPERTY(int diffGutter MEMBER diffGutter CONSTANT FINAL)
    Q_PROPERTY(int diffInset MEMBER diffInset CONSTANT FINAL)
    Q_PROPERTY(int historyAuthorWidth MEMBER historyAuthorWidth CONSTANT FINAL)
    Q_PROPERTY(int historyWhenWidth MEMBER historyWhenWidth CONSTANT FINAL)
    Q_PROPERTY(int historyHashWidth MEMBER historyHashWidth CONSTANT FINAL)
    Q_PROPERTY(int fileColumn MEMBER fileColumn CONSTANT FINAL)
    Q_PROPERTY(int fileIndent MEMBER fileIndent CONSTANT FINAL)
    Q_PROPERTY(int identitySheetWidth MEMBER identitySheetWidth CONSTANT FINAL)
    Q_PROPERTY(int chipHeight MEMBER chipHeight CONSTANT FINAL)
    Q_PROPERTY(int filterWidth MEMBER filterWidth CONSTANT FINAL)
    Q_PROPERTY(int folderRowHeight MEMBER folderRowHeight CONSTANT FINAL)
    Q_PROPERTY(int folderIndent MEMBER folderIndent CONSTANT FINAL)
    Q_PROPERTY(int tileList MEMBER tileList CONSTANT FINAL)
    Q_PROPERTY(int paletteWidth MEMBER paletteWidth CONSTANT FINAL)
    Q_PROPERTY(int paletteTop MEMBER paletteTop CONSTANT FINAL)
    Q_PROPERTY(int paletteField MEMBER paletteField CONSTANT FINAL)
    Q_PROPERTY(int paletteListHeight MEMBER paletteListHeight CONSTANT FINAL)
    Q_PROPERTY(int paletteRowHeight MEMBER paletteRowHeight CONSTANT FINAL)
    Q_PROPERTY(int deviceSheetWidth MEMBER deviceSheetWidth CONSTANT FINAL)
    Q_PROPERTY(int deviceRowHeight MEMBER deviceRowHeight CONSTANT FINAL)
    Q_PROPERTY(int deviceSheetLimit MEMBER deviceSheetLimit CONSTANT FINAL)
    Q_PROPERTY(int emptyListHeight MEMBER emptyListHeight CONSTANT FINAL)
    Q_PROPERTY(int howToWidth MEMBER howToWidth CONSTANT FINAL)
    Q_PROPERTY(int howToPicture MEMBER howToPicture CONSTANT FINAL)
    Q_PROPERTY(int welcomeWidth MEMBER welcomeWidth CONSTANT FINAL)
    Q_PROPERTY(int welcomePadding MEMBER welcomePadding CONSTANT FINAL)
    Q_PROPERTY(int welcomeTop MEMBER welcomeTop CONSTANT FINAL)
    Q_PROPERTY(int welcomeMark MEMBER welcomeMark CONSTANT FINAL)
    Q_PROPERTY(int sceneWidth MEMBER sceneWidth CONSTANT FINAL)
    Q_PROPERTY(int orbitInner MEMBER orbitInner CONSTANT FINAL)
    Q_PROPERTY(int orbitMiddle MEMBER orbitMiddle CONSTANT FINAL)
    Q_PROPERTY(int orbitOuter MEMBER orbitOuter CONSTANT FINAL)
    Q_PROPERTY(int sceneMark MEMBER sceneMark CONSTANT FINAL)
    Q_PROPERTY(int sceneWindowWidth MEMBER sceneWindowWidth CONSTANT FINAL)
    Q_PROPERTY(int sceneWindowHeight MEMBER sceneWindowHeight CONSTANT FINAL)
    Q_PROPERTY(int sceneSidebar MEMBER sceneSidebar CONSTANT FINAL)
    Q_PROPERTY(int sceneCardHeight MEMBER sceneCardHeight CONSTANT FINAL)
    Q_PROPERTY(int sceneIcon MEMBER sceneIcon CONSTANT FINAL)
    Q_PROPERTY(int progressPill MEMBER progressPill CONSTANT FINAL)
    Q_PROPERTY(int radiusKey MEMBER radiusKey CONSTANT FINAL)
    Q_PROPERTY(int radiusRow MEMBER radiusRow CONSTANT FINAL)
    Q_PROPERTY(int radiusControl MEMBER radiusControl CONSTANT FINAL)
    Q_PROPERTY(int radiusLarge MEMBER radiusLarge CONSTANT FINAL)
    Q_PROPERTY(int radiusCard MEMBER radiusCard CONSTANT FINAL)
    Q_PROPERTY(int radiusSheet MEMBER radiusSheet CONSTANT FINAL)

    // Blocks of a skeleton: x, y, width, height, radius. A negative x counts from the far edge.
    Q_PROPERTY(QVariantList skeletonCard READ skeletonCard CONSTANT FINAL)
    Q_PROPERTY(QVariantList skeletonPinned READ skeletonPinned CONSTANT FINAL)

    // Durations in milliseconds; no movement where the system asks for none.
    Q_PROPERTY(int durationPress MEMBER durationPress CONSTANT FINAL)
    Q_PROPERTY(int durationFast MEMBER durationFast CONSTANT FINAL)
    Q_PROPERTY(int durationEnter READ durationEnter NOTIFY reducedMotionChanged FINAL)
    Q_PROPERTY(int durationExit READ durationExit NOTIFY reducedMotionChanged FINAL)
    Q_PROPERTY(int durationSheet READ durationSheet NOTIFY reducedMotionChanged FINAL)
    Q_PROPERTY(int durationMove READ durationMove NOTIFY reducedMotionChanged FINAL)
    Q_PROPERTY(int durationRing MEMBER durationRing CONSTANT FINAL)
    Q_PROPERTY(int durationSpin MEMBER durationSpin CONSTANT FINAL)
    Q_PROPERTY(int durationPulse MEMBER durationPulse CONSTANT FINAL)
    Q_PROPERTY(int tooltipDelay MEMBER tooltipDelay CONSTANT FINAL)
    Q_PROPERTY(QVariantList easeStandard READ easeStandard CONSTANT FINAL)
    Q_PROPERTY(QVariantList easeEnter READ easeEnter CONSTANT FINAL)
    Q_PROPERTY(QVariantList easeExit READ easeExit CONSTANT FINAL)

public:
    /// What a text is for; its size, line, weight and spacing follow.
    enum TextRole {
        Display,
        Page,
        Title,
        SheetTitle,
        Heading,
        CardTitle,
        Body,
        BodyStrong,
        Section,
        Small,
        SmallStrong,
        Caption,
        Mono,
        MonoPath,
        Console,
        TileLetter,
        BadgeLetter,
        CaptionPlain,
        Hero,
        Lead,
        Sentence,
        LargeButton,
        Mini,
        MiniStrong,
        CaptionStrong,
    };
    Q_ENUM(TextRole)

    static constexpr int hairline = 1, space2 = 2, space4 = 4, space6 = 6, space8 = 8, space10 = 10, space12 = 12;
    static constexpr int space16 = 16, space20 = 20, space24 = 24, space28 = 28, space32 = 32, space40 = 40;
    static constexpr int pagePadding = 32, pagePaddingNarrow = 24, contentWidthLimit = 1408, gridGap = 16;
    static constexpr int shelfGap = 28;
    static constexpr int cardHeight = 160, cardColumnWidth = 312, runningItemHeight = 64, pinnedItemHeight = 48;
    static constexpr int panelInset = 8, sidebarWidth = 240, sidebarWidthWide = 256, railWidth = 72;
    static constexpr int railButtonWidth = 40, railButtonHeight = 36, narrowLimit = 1000, wideLimit = 1520;
    static constexpr int minimumWidth = 760, minimumHeight = 560, defaultWidth = 1280, defaultHeight = 832;
    static constexpr int titleZoneHeight = 52, topBarHeight = 48, crumbGap = 9, resizeEdge = 5;
    static constexpr int sidebarRowHeight = 32, outlineRowHeight = 28, outlineIndent = 18, menuRowHeight = 32;
    static constexpr int menuWidth = 200, popoverWidth = 280, popoverHeight = 360;
    static constexpr int controlMini = 24, controlSmall = 28, controlRegular = 32, splitWidth = 28;
    static constexpr int searchWidth = 232, searchWidthNarrow = 204, logToolsWidth = 550;
    static constexpr int sheetWidth = 520, statusLineHeight = 40, statusLineLimit = 560, tooltipHeight = 28;
    static constexpr int tooltipLimit = 420, emptyWidth = 440, emptyLift = 56, illustration = 120;
    static constexpr int iconTiny = 10, iconMini = 12, iconSmall = 14, icon = 16, iconLarge = 18, mark = 20, dot = 8;
    static constexpr int dotSmall = 6, dotHalo = 14, tileMini = 16, badge = 18, tileSmall = 28, tile = 36,
                         tileLarge = 44, avatar = 28;
    static constexpr int swatchSize = 20, progressHeight = 6, scrollBar = 10;
    static constexpr int focusWidth = 2, focusGap = 2, haloWidth = 3, kindWidth = 60, bubble = 16, sheetFoot = 62,
                         setupStepHeight = 61, radiusKey = 4, radiusRow = 7, radiusControl = 8;
    static constexpr int terminalStrip = 44, terminalTabMin = 128, terminalTabMax = 216;
    static constexpr int terminalPaddingX = 18, terminalPaddingY = 14;
    static constexpr int agentPanelWidth = 372, agentPanelWidthWide = 420;
    static constexpr int composerBox = 120, composerBoxPanel = 128, agentListWidth = 296, autonomyCardHeight = 102,
                         addSheetWidth = 528, gutter = 52, suggestionHeight = 152, suggestionPicture = 104,
                         composerHeight = 44, taskRowHeight = 44, switchWidth = 36, switchHeight = 20, switchInset = 3,
                         settingRowHeight = 60, tabHeight = 40, settingsNavWidth = 172, settingsWidth = 680,
                         serviceRowHeight = 68, serviceItemHeight = 56, alertWidth = 400, panelRowHeight = 52,
                         panelHeadingHeight = 34, alertIcon = 64, quickPanelWidth = 360, quickPanelLimit = 640,
                         portFieldWidth = 112, overviewOutput = 290, sideWidth = 304, sideWidthWide = 340,
                         headerTile = 48, taskRound = 18, taskRoundSmall = 16, taskAgeWidth = 84, listWidthLimit = 816,
                         checkbox = 16, fieldLarge = 40, buttonDialog = 36, modeSwatchWidth = 196,
                         modeSwatchHeight = 116, themeSwatchWidth = 112, themeSwatchHeight = 84;
    static constexpr int gitColumn = 308, gitColumnNarrow = 264, gitColumnWide = 340, gitWideLimit = 1240,
                         gitRowHeight = 30, gitHeadingHeight = 36, gitHistoryHeight = 184, gitHistoryLimit = 520,
                         commitTextHeight = 64, paneHeaderHeight = 44, diffGutter = 40, diffInset = 106,
                         historyAuthorWidth = 98, historyWhenWidth = 86, historyHashWidth = 64, fileColumn = 271,
                         fileIndent = 16, identitySheetWidth = 440;
    static constexpr int chipHeight = 26, filterWidth = 392, folderRowHeight = 44, folderIndent = 24, tileList = 24;
    static constexpr int paletteWidth = 640, paletteTop = 106, paletteField = 56, paletteListHeight = 424,
                         paletteRowHeight = 40;
    static constexpr int deviceSheetWidth = 460, deviceRowHeight = 44, deviceSheetLimit = 640, emptyListHeight = 120,
                         howToWidth = 480, howToPicture = 172;
    static constexpr int welcomeWidth = 560, welcomePadding = 64, welcomeTop = 88, welcomeMark = 58, sceneWidth = 420,
                         orbitInner = 300, orbitMiddle = 470, orbitOuter = 620, sceneMark = 176, sceneWindowWidth = 560,
                         sceneWindowHeight = 420, sceneSidebar = 112, sceneCardHeight = 106, sceneIcon = 8,
                         progressPill = 20;
    static constexpr int radiusLarge = 10, radiusCard = 12, radiusSheet = 16;
    static constexpr int durationPress = 80, durationFast = 120, durationRing = 600, durationSpin = 900;
    static constexpr int durationPulse = 1200, tooltipDelay = 500;

    static constexpr qreal wheelSpeed = 8; ///< pixels a second for an eighth of a degree of the wheel

    /// Without a default: QML would make a second one by it, instead of asking create().
    explicit Theme(QObject* parent);

    /// The one theme of the process, made when it is first asked for; the application object owns it.
    [[nodiscard]] static Theme* instance();
    /// For QML.
    static Theme* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    void setTheme(int theme);
    using ThemeColors::theme;
    /// Dark or light, whoever decided it.
    void setDark(bool dark);
    void setHigherContrast(bool isHigher);
    [[nodiscard]] int softEdge() const { return hasHigherContrast() ? hairline : 0; }
    [[nodiscard]] bool reducedMotion() const { return m_reducedMotion; }
    void setReducedMotion(bool reduced);

    [[nodiscard]] Q_INVOKABLE QFont font(orv::Theme::TextRole role) const;
    /// The same, with figures that are all as wide as each other: for counts, ports, times and costs.
    [[nodiscard]] Q_INVOKABLE QFont figures(orv::Theme::TextRole role) const;
    [[nodiscard]] Q_INVOKABLE int lineHeight(orv::Theme::TextRole role) const;
    /// How far the glyphs of a role stand below the top of their line, so that they are centred in it.
    [[nodiscard]] Q_INVOKABLE int lead(orv::Theme::TextRole role) const;
    /// Radius of a project tile of that size.
    [[nodiscard]] Q_INVOKABLE static int tileRadius(int size);
    /// Black or white, whichever is easier to read on that colour.
    [[nodiscard]] Q_INVOKABLE static QColor onFill(const QColor& fill);
    /// A project tile's colours. `dark` is there so that a binding follows the theme.
    [[nodiscard]] Q_INVOKABLE QColor tileFill(int index, bool dark) const;
    [[nodiscard]] Q_INVOKABLE QColor tileLetter(int index, bool dark) const;
    /// A colour of terminals: 0 to 255 of the palette, or 0x1000000 with red, green and blue.
    [[nodiscard]] QColor terminalColor(int color) const;
    /// What a swatch is drawn in.
    enum Swatch {
        SwatchWindow,
        SwatchSidebar,
        SwatchSurface,
        SwatchBorder,
        SwatchText,
        SwatchLine,
        SwatchAccent,
        SwatchSuccess,
        SwatchSelection,
        SwatchFaintLine,
    };
    Q_ENUM(Swatch)
    /// A colour of any theme, for its swatch.
    [[nodiscard]] Q_INVOKABLE static QColor swatch(int theme, bool dark, orv::Theme::Swatch role = SwatchAccent);

    [[nodiscard]] static QVariantList skeletonCard();
    [[nodiscard]] static QVariantList skeletonPinned();

    [[nodiscard]] int durationEnter() const { return m_reducedMotion ? durationPress : 180; }
    [[nodiscard]] int durationExit() const { return m_reducedMotion ? durationPress : 120; }
    [[nodiscard]] int durationSheet() const { return m_reducedMotion ? durationPress : 260; }
    [[nodiscard]] int durationMove() const { return m_reducedMotion ? 0 : 220; }
    [[nodiscard]] static QVariantList easeStandard() { return {0.2, 0.0, 0.0, 1.0, 1.0, 1.0}; }
    [[nodiscard]] static QVariantList easeEnter() { return {0.0, 0.0, 0.0, 1.0, 1.0, 1.0}; }
    [[nodiscard]] static QVariantList easeExit() { return {0.4, 0.0, 1.0, 1.0, 1.0, 1.0}; }

    /// Makes the fonts of the application known to Qt, once a process.
    static void loadFonts();

Q_SIGNALS:
    void themeChanged();
    void reducedMotionChanged();

private:
    std::array<QFont, CaptionStrong + 1> m_fonts;
    std::array<QFont, CaptionStrong + 1> m_figures;
    mutable std::array<std::optional<int>, CaptionStrong + 1> m_leads; ///< of the roles that were asked for
    bool m_reducedMotion = false;
};

} // namespace orv
