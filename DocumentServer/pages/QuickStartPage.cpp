#include "QuickStartPage.h"

#include <QUrlQuery>

#include <array>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr PageText title{"快速入门", "快速入門", "Quick start"};
constexpr PageText forVersion{"适用于 Quillbox %1", "適用於 Quillbox %1", "For Quillbox %1"};

struct Step {
    PageText heading;
    PageText text;
};

constexpr std::array steps = std::to_array<Step>({
    {{"在哪里找到文档", "在哪裡找到文件", "Find your documents"},
     {"登录后，您的文档会显示为名为 Quillbox 的卷。可以像本机文件夹一样在文件管理器或任何程序中打开它。",
      "登入後，您的文件會顯示為名為 Quillbox 的卷宗。可以像本機檔案夾一樣在檔案管理程式或任何程式中開啟它。",
      "After signing in, your documents appear as a volume named Quillbox. Open it in the file manager or from any "
      "program, like a folder of your own."}},
    {{"保存与共享", "儲存與共享", "Save and share"},
     {"保存到卷中的内容会直接送到服务器。被其他人锁定的文件只能读取，直到锁定解除。",
      "儲存到卷宗中的內容會直接送到伺服器。被其他人鎖定的檔案只能讀取，直到鎖定解除。",
      "What you save there goes to the server at once. A file that somebody else has locked can be read, and written "
      "again when the lock is gone."}},
    {{"菜单", "選單", "The menu"},
     {"Quillbox 的图标在屏幕边缘的托盘中。点击它可以打开云盘、搜索、设置、注销和退出。",
      "Quillbox 的圖示在螢幕邊緣的系統匣中。按一下它可以開啟雲碟、搜尋、設定、登出和結束。",
      "Quillbox lives in the tray at the edge of the screen. Its icon opens the volume, search and settings, and is "
      "the "
      "place to sign out and to quit."}},
    {{"离开", "離開", "Leave"},
     {"注销后卷会消失，文档仍安全地保存在服务器上。", "登出後卷宗會消失，文件仍安全地儲存在伺服器上。",
      "Signing out takes the volume away; your documents stay safe on the server."}},
});
} // namespace

Reply quickStartPage(const PageRequest &request)
{
    const PageLanguage language = languageOf(request);
    const QString version =
        QUrlQuery(QString::fromUtf8(request.query)).queryItemValue(u"version"_s, QUrl::FullyDecoded).left(32);
    QString body;
    if (!version.isEmpty())
        body += u"<p>%1</p>"_s.arg(forVersion.in(language).arg(version.toHtmlEscaped()));
    for (const Step &step : steps)
        body += u"<h2>%1</h2><p>%2</p>"_s.arg(step.heading.in(language), step.text.in(language));
    return pageWith(language, title.in(language), body);
}

} // namespace documentserver
