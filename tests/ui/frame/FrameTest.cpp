// The frame of the dialogs: the pictures of the image keys, and the real message boxes the Qt user
// interface opens (their text, icon, buttons and default button).
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

#include <QAction>
#include <QTest>
#include <QTreeWidgetItem>

#include <meridex/ui/QtUserInterface.h>
#include <meridex/ui/frame/ImageKeys.h>

#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;
using ui::ImageIcon;

namespace {

QImage Picture(const QIcon& icon) { return icon.pixmap(16, 16).toImage(); }

}  // namespace

// The image keys the dialogs give their lists, trees and toolbars: each must have a picture of its own.
TEST(ImageKeys, EveryKeyTheDialogsUseHasItsOwnPicture) {
    const QStringList used = {"USER",       "ADDRBOOK", "CLOSEDGROUP", "OPENGROUP",   "SITE",       "PHONE",
                              "SCHEME",     "TREE",     "CARDFILE",    "CARD",        "DIRECT",     "PHONEMODEM",
                              "IP",         "UNKNOWN",  "QUESTION",    "MAP",         "ADDGROUP",   "DELETEGROUP",
                              "ADDSITE",    "DELETESITE", "ADDPARAM",  "DELETEPARAM", "EDITPARAM",
                              "FIRMWARE",   "FIRMWARERUNNING"};
    const QStringList drawn = ui::ImageKeys();
    for (const QString& key : used) {
        EXPECT_TRUE(drawn.contains(key)) << key.toStdString();
        // A picture that draws nothing would pass as an icon; at least a few pixels must be painted.
        const QImage image = Picture(ImageIcon(key));
        int painted = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x) painted += qAlpha(image.pixel(x, y)) > 0;
        EXPECT_GT(painted, 20) << key.toStdString();
    }
}

TEST(ImageKeys, ItemsAndActionsShowThePictureOfTheirKeyAndAnUnknownKeyTheUnknownPicture) {
    const QImage unknown = Picture(ImageIcon("UNKNOWN"));
    EXPECT_EQ(Picture(ImageIcon("NO SUCH KEY")), unknown);
    EXPECT_NE(Picture(ImageIcon("USER")), unknown);
    QTreeWidgetItem item(QStringList{"text", "second"});
    ui::setImageKey(&item, "SITE", 1);
    QAction action("Add Group");
    ui::setImageKey(&action, "ADDGROUP");
    EXPECT_EQ(Picture(item.icon(1)), Picture(ImageIcon("SITE")));
    EXPECT_TRUE(item.icon(0).isNull());
    EXPECT_EQ(Picture(action.icon()), Picture(ImageIcon("ADDGROUP")));
}

TEST(QtUserInterface, MessageBoxShowsTextIconButtonsAndCaptionAndAnswersTheButtonClicked) {
    ui::QtUserInterface qt;
    MessageResult ok{}, no{};
    ModalScript()
        .Then([](QWidget* modal) {
            QMessageBox* box = AsMessageBox(modal);
            EXPECT_EQ(box->text(), "Error 53 - File not found\n\nIn subroutine: x:y");
            EXPECT_EQ(box->windowTitle(), "Meridex");
            EXPECT_EQ(box->icon(), QMessageBox::Critical);
            EXPECT_EQ(box->standardButtons(), QMessageBox::Ok);
            Answer(modal, QMessageBox::Ok);
        })
        .Then([](QWidget* modal) {
            EXPECT_EQ(AsMessageBox(modal)->standardButtons(), QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
            Answer(modal, QMessageBox::No);
        })
        .Run([&] {
            ok = qt.MessageBox("Error 53 - File not found\r\n\r\nIn subroutine: x:y", MessageButtons::OK,
                               MessageIcon::Critical, {});
            no = qt.MessageBox("Save?", MessageButtons::YesNoCancel, MessageIcon::Question, {});
        });
    EXPECT_EQ(ok, MessageResult::OK);
    EXPECT_EQ(no, MessageResult::No);
}
TEST(QtUserInterface, EnterChoosesTheDefaultButtonAndEscapeCancels) {
    ui::QtUserInterface qt;
    const auto ask = [&](MessageDefaultButton defaultButton, int key) {
        MessageResult result{};
        ModalScript()
            .Then([&](QWidget* modal) {
                EXPECT_EQ(AsMessageBox(modal)->icon(), QMessageBox::Information);
                QTest::keyClick(modal, static_cast<Qt::Key>(key));
            })
            .Run([&] {
                result = qt.MessageBox("Delete profile: X", MessageButtons::OKCancel, MessageIcon::Information, "Caption",
                                       defaultButton);
            });
        return result;
    };
    EXPECT_EQ(ask(MessageDefaultButton::Second, Qt::Key_Return), MessageResult::Cancel);
    EXPECT_EQ(ask(MessageDefaultButton::First, Qt::Key_Return), MessageResult::OK);
    EXPECT_EQ(ask(MessageDefaultButton::First, Qt::Key_Escape), MessageResult::Cancel);
}

TEST(QtUserInterface, ChooseOffersOneButtonPerChoiceAndAnswersItsIndex) {
    ui::QtUserInterface qt;
    // Each way of answering and the index it gives: Enter takes the default (the second) choice.
    const std::function<void(QMessageBox*)> answers[] = {
        [](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Return); },
        [](QMessageBox* box) { Click(box->buttons().at(2)); },
    };
    std::vector<std::optional<int>> results;
    for (const auto& answer : answers) {
        ModalScript()
            .Then([&](QWidget* modal) {
                QMessageBox* box = AsMessageBox(modal);
                QStringList texts;
                for (QAbstractButton* button : box->buttons()) texts << button->text();
                EXPECT_EQ(texts, (QStringList{"&Try Again", "&Save to Another File...", "&Close Without Saving"}));
                EXPECT_EQ(box->icon(), QMessageBox::Warning);
                answer(box);
            })
            .Run([&] {
                results.push_back(qt.Choose("Not saved", {"&Try Again", "&Save to Another File...", "&Close Without Saving"},
                                            MessageIcon::Exclamation, "Address Book", 1));
            });
    }
    EXPECT_EQ(results, (std::vector<std::optional<int>>{1, 2}));
}
