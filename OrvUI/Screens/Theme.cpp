#include "OrvUI/Screens/Theme.h"

#include "OrvCore/Async.h"

#include <QCoreApplication>
#include <QDir>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QJSEngine>
#include <QPointer>
#include <QRawFont>
#include <QResource>
#include <QtMath>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

/// The width of a letter of the code face, in parts of its size.
constexpr qreal codeAdvance = 0.6;

enum class Family { text, display, code };

struct Style {
    Family family;
    qreal size;
    int line;
    QFont::Weight weight;
    qreal spacing; ///< percent of the size
};

// In the order of Theme::TextRole.
constexpr Style styles[] = {
    {Family::display, 28, 36, QFont::DemiBold, -1.5}, // Display
    {Family::display, 24, 32, QFont::DemiBold, -1.5}, // Page
    {Family::display, 20, 28, QFont::DemiBold, -1},   // Title
    {Family::display, 18, 24, QFont::DemiBold, -1},   // SheetTitle
    {Family::text, 15, 24, QFont::DemiBold, 0},       // Heading
    {Family::text, 14, 20, QFont::DemiBold, 0},       // CardTitle
    {Family::text, 13, 20, QFont::Normal, 0},         // Body
    {Family::text, 13, 20, QFont::Medium, 0},         // BodyStrong
    {Family::text, 13, 20, QFont::DemiBold, 0},       // Section
    {Family::text, 12, 16, QFont::Normal, 0},         // Small
    {Family::text, 12, 16, QFont::Medium, 0},         // SmallStrong
    {Family::text, 11, 16, QFont::Medium, 0},         // Caption
    {Family::code, 12, 16, QFont::Normal, 0},         // Mono
    {Family::code, 11.5, 16, QFont::Normal, 0},       // MonoPath
    {Family::code, 12.5, 20, QFont::Normal, 0},       // Console
    {Family::text, 9, 12, QFont::Bold, 0},            // TileLetter
    {Family::text, 7.5, 10, QFont::Bold, 0},          // BadgeLetter
    {Family::text, 11, 16, QFont::Normal, 0},         // CaptionPlain
    {Family::display, 32, 40, QFont::DemiBold, -1.5}, // Hero
    {Family::text, 15, 24, QFont::Normal, 0},         // Lead
    {Family::text, 14, 22, QFont::Normal, 0},         // Sentence
    {Family::text, 14, 20, QFont::Medium, 0},         // LargeButton
    {Family::text, 8, 10, QFont::Normal, 0},          // Mini
    {Family::text, 9, 10, QFont::Medium, 0},          // MiniStrong
    {Family::text, 11, 16, QFont::DemiBold, 0},       // CaptionStrong
};
static_assert(std::size(styles) == Theme::CaptionStrong + 1);

QString familyName(Family family) {
    switch (family) {
    case Family::text:
        return u"Inter"_s;
    case Family::display:
        return u"Inter Display"_s;
    case Family::code:
        return u"JetBrains Mono"_s;
    }
    return {};
}

QFont fontOf(const Style& style) {
    QFont font(familyName(style.family));
    // There are no fonts of half a pixel: a half goes to the even size, and the letters keep the room they should have.
    const int pixels = static_cast<int>(std::nearbyint(style.size));
    font.setPixelSize(pixels);
    font.setWeight(style.weight);
    if (style.spacing != 0) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, style.size * style.spacing / 100);
    }
    // Keeps the shapes of the letters, and their spacing.
    font.setHintingPreference(QFont::PreferNoHinting);
    if (style.family == Family::code) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, (style.size - pixels) * codeAdvance);
        font.setFixedPitch(true);
        font.setStyleHint(QFont::Monospace);
        font.setStyleStrategy(QFont::PreferNoShaping); // no ligatures: a command is shown as it is typed
    }
    return font;
}

/// Qt asks no font for its features before 6.7: the faces of figures have no others than tabular ones, and some
/// letters.
QFont figuresOf(const Style& style, QFont font) {
    if (style.family == Family::text) {
        font.setFamilies({u"Orv Figures"_s, familyName(style.family)});
    }
    return font;
}

/// Used where it lies in the program: by its name Qt would read it into memory, twice.
QByteArray fontData(const QString& file) {
    const QResource font(u":/qt/qml/OrvLauncher/Screens/fonts/"_s + file);
    Q_ASSERT(font.isValid() && font.compressionAlgorithm() == QResource::NoCompression);
    return QByteArray::fromRawData(reinterpret_cast<const char*>(font.data()), font.size());
}

/// Of all faces of a family, by the pixel of their size.
struct Extent {
    double ascent = 0;
    double descent = 0;
};

/// Not as a QFont: Qt counts each size of each face as 200 KB, and wakes up by a timer to look for what it can drop
/// once that adds up to more than 4 MB.
const Extent& extentOf(Family family) {
    const auto read = [](const QString& file) {
        constexpr qreal large = 1000;
        const QRawFont face(fontData(file), large, QFont::PreferNoHinting);
        return Extent{face.ascent() / large, face.descent() / large};
    };
    // In the order of Family.
    static const std::array extents{
        read(u"Inter-Regular.ttf"_s), read(u"InterDisplay-SemiBold.ttf"_s), read(u"JetBrainsMono-Regular.ttf"_s)};
    return extents[size_t(family)];
}

/// Below the top of the line, so that the face stands in its middle. At the sizes of a screen ascent and descent are
/// rounded each, which moves the letters of some sizes down by a pixel.
int baseline(const Style& style) {
    const Extent& extent = extentOf(style.family);
    return qFloor((style.line - (extent.ascent + extent.descent) * style.size) / 2 + extent.ascent * style.size);
}

} // namespace

void Theme::loadFonts() {
    static const bool loaded = [] {
        const QDir folder(u":/qt/qml/OrvLauncher/Screens/fonts"_s);
        for (const QString& file : folder.entryList({u"*.otf"_s, u"*.ttf"_s})) {
            QFontDatabase::addApplicationFontFromData(fontData(file));
        }
        return true;
    }();
    Q_UNUSED(loaded)
}

Theme::Theme(QObject* parent) : ThemeColors(parent) {
    loadFonts();
    std::ranges::transform(styles, m_fonts.begin(), fontOf);
    std::ranges::transform(styles, m_fonts, m_figures.begin(), figuresOf);
}

Theme* Theme::instance() {
    static QPointer<Theme> theme;
    if (theme == nullptr) {
        theme = new Theme(QCoreApplication::instance());
    }
    return theme;
}

Theme* Theme::create(QQmlEngine* engine, QJSEngine* scriptEngine) {
    Q_UNUSED(engine)
    Q_UNUSED(scriptEngine)
    QJSEngine::setObjectOwnership(instance(), QJSEngine::CppOwnership);
    return instance();
}

void Theme::setTheme(int theme) {
    ORV_ASSERT_MAIN_THREAD();
    if (theme < 0 || theme >= themeCount || theme == this->theme()) {
        return;
    }
    use(theme, isDark());
    Q_EMIT themeChanged();
}

void Theme::setDark(bool dark) {
    ORV_ASSERT_MAIN_THREAD();
    use(theme(), dark);
}

void Theme::setHigherContrast(bool isHigher) {
    ORV_ASSERT_MAIN_THREAD();
    useHigherContrast(isHigher);
}

void Theme::setReducedMotion(bool reduced) {
    ORV_ASSERT_MAIN_THREAD();
    if (reduced == m_reducedMotion) {
        return;
    }
    m_reducedMotion = reduced;
    Q_EMIT reducedMotionChanged();
}

QFont Theme::font(TextRole role) const {
    return m_fonts[size_t(role)];
}

QFont Theme::figures(TextRole role) const {
    return m_figures[size_t(role)];
}

int Theme::lineHeight(TextRole role) const {
    return styles[role].line;
}

int Theme::lead(TextRole role) const {
    std::optional<int>& lead = m_leads[size_t(role)];
    if (!lead) {
        lead = baseline(styles[role]) - qCeil(QFontMetricsF(m_fonts[size_t(role)]).ascent());
    }
    return *lead;
}

QColor Theme::onFill(const QColor& fill) {
    // WCAG 2.2, relative luminance; where the contrast to black and to white is the same.
    const auto linear = [](float part) {
        return part <= 0.04045F ? part / 12.92F : std::pow((part + 0.055F) / 1.055F, 2.4F);
    };
    constexpr float middle = 0.179F;
    const float luminance =
        0.2126F * linear(fill.redF()) + 0.7152F * linear(fill.greenF()) + 0.0722F * linear(fill.blueF());
    return luminance > middle ? Qt::black : Qt::white;
}

int Theme::tileRadius(int size) {
    if (size <= 24) {
        return 6;
    }
    return size < 44 ? 9 : 12;
}

QColor Theme::tileFill(int index, bool dark) const {
    Q_UNUSED(dark)
    return tileFillAt(index);
}

QColor Theme::tileLetter(int index, bool dark) const {
    Q_UNUSED(dark)
    return tileLetterAt(index);
}

QVariantList Theme::skeletonCard() {
    using Block = QVariantList;
    return {Block{16, 16, 36, 36, 9},  Block{64, 19, 116, 12, 6}, Block{64, 39, 78, 10, 5},
            Block{16, 70, 150, 10, 5}, Block{16, 123, 86, 10, 5}, Block{-104, 112, 88, 32, 8}};
}

QVariantList Theme::skeletonPinned() {
    using Block = QVariantList;
    return {Block{12, 10, 28, 28, 9}, Block{50, 19, 92, 10, 5}};
}

QColor Theme::terminalColor(int color) const {
    constexpr int direct = 0x1000000;
    if (color >= direct) {
        return QColor::fromRgb(QRgb(color & 0xffffff));
    }
    if (color < 16) {
        return ansi(color);
    }
    // xterm's palette: a cube of six steps a side, then 24 greys.
    if (color < 232) {
        const auto level = [](int step) { return step == 0 ? 0 : 55 + 40 * step; };
        const int place = color - 16;
        return {level(place / 36), level(place / 6 % 6), level(place % 6)};
    }
    const int grey = 8 + 10 * (color - 232);
    return {grey, grey, grey};
}

QColor Theme::swatch(int theme, bool dark, Swatch role) {
    // Places in ThemeColors' table: window, sidebar, surface, border, text, text3, accent, success, selection,
    // borderStrong.
    static constexpr std::array places{0, 1, 2, 5, 8, 10, 12, 17, 22, 6};
    return colorOf(theme, dark, places[size_t(role)]);
}

} // namespace orv
