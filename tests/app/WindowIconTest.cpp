// The window carries the application icon for task switchers and title bars: the same pictures
// as the icon theme's, at every size a window manager asks for.
#include "StageRig.h"

#include <QIcon>

TEST(WindowIcon, WindowCarriesTheThemesPictureAtEverySize)
{
    orvan::test::StageRig rig;
    QApplication::processEvents(); // the icon is given right after the first frame
    const QIcon icon = rig.window().windowIcon();
    for (int size : {16, 24, 32, 48, 64, 128}) {
        SCOPED_TRACE(std::to_string(size) + " px");
        ASSERT_TRUE(icon.availableSizes().contains(QSize(size, size)));
        const QImage shown = icon.pixmap(QSize(size, size), 1.0).toImage().convertToFormat(QImage::Format_ARGB32);
        const QImage theme = QImage(QStringLiteral(ORVAN_ICON_DIR "/%1x%1.png").arg(size)).convertToFormat(QImage::Format_ARGB32);
        ASSERT_FALSE(theme.isNull());
        EXPECT_EQ(shown, theme);
        // A look at the picture itself: clear corners, the blue glass lens in the middle.
        EXPECT_EQ(qAlpha(shown.pixel(0, 0)), 0);
        const QRgb lens = shown.pixel(size / 4, size / 2);
        EXPECT_EQ(qAlpha(lens), 255);
        EXPECT_GT(qBlue(lens), 2 * qRed(lens));
    }
}
