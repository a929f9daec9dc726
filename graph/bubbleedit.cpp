#include "graph/bubbleedit.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QIcon>
#include <QImageReader>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

#include "common/settings.h"
#include "common/userprompt.h"

namespace {

constexpr int iconSize = 48;
// More than a balloon shows in print; a photograph as it is would swell every file of the experiment.
constexpr int longestSide = 600;

QPixmap loadPicture(const QString& file)
{
    QImageReader reader(file);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.width() <= longestSide && image.height() <= longestSide)
        return QPixmap::fromImage(image);
    return QPixmap::fromImage(
        image.scaled(longestSide, longestSide, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

} // namespace

BubbleEdit::BubbleEdit(const QString& text, std::function<int()> place, bool isBubble, UserPrompt* prompt,
                       QWidget* parent)
    : QDialog(parent)
    , place(std::move(place))
    , prompt(prompt)
    , textEdit(new QPlainTextEdit(text))
    , boxBalloon(new QCheckBox(tr("Bubble shape")))
{
    setObjectName(QStringLiteral("bubbleEdit"));
    setWindowTitle(tr("Edit annotation"));
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    auto* icon = new QLabel;
    icon->setPixmap(QIcon(QStringLiteral(":icons/Annotate.png")).pixmap(iconSize, iconSize));
    auto* label = new QLabel(tr("Annotation text"));
    label->setBuddy(textEdit);
    textEdit->setObjectName(QStringLiteral("textEdit"));
    textEdit->setTabChangesFocus(true);
    textEdit->selectAll();
    boxBalloon->setObjectName(QStringLiteral("boxBalloon"));
    boxBalloon->setChecked(isBubble);
    auto* imageButton = new QPushButton(tr("Add image"));
    imageButton->setObjectName(QStringLiteral("imageButton"));
    imageButton->setAutoDefault(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);

    auto* head = new QHBoxLayout;
    head->addWidget(icon);
    head->addWidget(label, 1);
    auto* shape = new QHBoxLayout;
    shape->addWidget(boxBalloon, 1);
    shape->addWidget(imageButton);
    auto* all = new QVBoxLayout(this);
    all->addLayout(head);
    all->addWidget(textEdit);
    all->addLayout(shape);
    all->addWidget(buttons);

    connect(textEdit, &QPlainTextEdit::textChanged, this,
            [this] { Q_EMIT textChanged(textEdit->toPlainText(), this->place()); });
    connect(boxBalloon, &QCheckBox::clicked, this,
            [this](bool tf) { Q_EMIT bubbleChanged(tf, this->place()); });
    connect(imageButton, &QPushButton::clicked, this, &BubbleEdit::chooseImage);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void BubbleEdit::chooseImage()
{
    if (!prompt)
        return;
    const QPointer<BubbleEdit> alive(this);
    const QString folder =
        Settings::mainStore().value(Settings::imageFolder, QCoreApplication::applicationDirPath()).toString();
    const QString file = prompt->openFile(this, tr("Select image"), folder,
                                          tr("Image files (*.jpg *.jpeg *.bmp *.png *.tif)"));
    if (!alive || file.isEmpty())
        return;
    Settings::mainStore().setValue(Settings::imageFolder, QFileInfo(file).absolutePath());
    const QPixmap picture = loadPicture(file);
    if (picture.isNull())
        return;
    Q_EMIT imageChanged(picture, place());
    boxBalloon->setChecked(true);
    Q_EMIT bubbleChanged(true, place());
}
