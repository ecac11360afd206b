// The Qt user interface opens real message boxes: their text, icon, buttons and default button.
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <vector>

#include <QAbstractButton>
#include <QMessageBox>
#include <QTest>

#include <meridex/ui/QtUserInterface.h>

#include "DialogTest.h"

using namespace meridex;
using namespace meridex::test;

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
