#include <gtest/gtest.h>

#include <QAction>
#include <QTreeWidgetItem>

#include <meridex/ui/frame/ImageKeys.h>

using namespace meridex::ui;

// The image keys the dialogs give their lists, trees and toolbars: each must have a picture of its own.
TEST(ImageKeys, EveryKeyTheDialogsUseHasItsOwnPicture) {
    const QStringList used = {"USER",       "ADDRBOOK", "CLOSEDGROUP", "OPENGROUP",   "SITE",       "PHONE",
                              "SCHEME",     "TREE",     "CARDFILE",    "CARD",        "DIRECT",     "PHONEMODEM",
                              "IP",         "UNKNOWN",  "QUESTION",    "MAP",         "ADDGROUP",   "DELETEGROUP",
                              "ADDSITE",    "DELETESITE", "ADDPARAM",  "DELETEPARAM", "EDITPARAM",
                              "FIRMWARE",   "FIRMWARERUNNING"};
    const QStringList drawn = ImageKeys();
    for (const QString& key : used) {
        EXPECT_TRUE(drawn.contains(key)) << key.toStdString();
        const QIcon icon = ImageIcon(key);
        ASSERT_FALSE(icon.isNull()) << key.toStdString();
        // A picture that draws nothing would pass as an icon; at least a few pixels must be painted.
        const QImage image = icon.pixmap(16, 16).toImage();
        int painted = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) painted += qAlpha(image.pixel(x, y)) > 0;
        EXPECT_GT(painted, 20) << key.toStdString();
    }
}

TEST(ImageKeys, AKeyWithoutAPictureShowsTheUnknownPicture) {
    const QImage unknown = ImageIcon("UNKNOWN").pixmap(16, 16).toImage();
    EXPECT_EQ(ImageIcon("NO SUCH KEY").pixmap(16, 16).toImage(), unknown);
    EXPECT_NE(ImageIcon("USER").pixmap(16, 16).toImage(), unknown);
}

TEST(ImageKeys, ItemsAndActionsShowThePictureOfTheirKey) {
    QTreeWidgetItem item(QStringList{"text", "second"});
    setImageKey(&item, "SITE", 1);
    QAction action("Add Group");
    setImageKey(&action, "ADDGROUP");
    EXPECT_EQ(item.icon(1).pixmap(16, 16).toImage(), ImageIcon("SITE").pixmap(16, 16).toImage());
    EXPECT_TRUE(item.icon(0).isNull());
    EXPECT_EQ(action.icon().pixmap(16, 16).toImage(), ImageIcon("ADDGROUP").pixmap(16, 16).toImage());
}
