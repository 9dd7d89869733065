#include "Pages.h"

#include "QuickStartPage.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype largestForm = 16 * 1024;

QString signOnFolder()
{
    return u"/sso/"_s;
}

/// Keeps a form of ordinary size until it is complete.
class FormReceiver : public BodyReceiver
{
public:
    FormReceiver(Pages &all, PageRequest known) : pages(all), request(std::move(known)) {}

    void take(const char *data, qsizetype length) override
    {
        isTooLarge = isTooLarge || request.form.size() + length > largestForm;
        if (!isTooLarge)
            request.form.append(data, length);
    }

    Reply finish() override { return isTooLarge ? replyFor(ApiError{TooLarge, {}, {}, {}}) : pages.answer(request); }

    bool wantsMore() const override { return !isTooLarge; }

private:
    Pages &pages;
    PageRequest request;
    bool isTooLarge = false;
};
} // namespace

bool Pages::isPage(const QString &path)
{
    return path.startsWith(signOnFolder()) || path == "/quickstart"_L1;
}

Reply Pages::answer(const PageRequest &request)
{
    if (request.path.startsWith(signOnFolder()))
        return signOn.answer(request.path.mid(signOnFolder().size()), request);
    return request.isPost ? replyFor(ApiError{MethodNotAllowed, {}, {}, {}}) : quickStartPage(request);
}

std::unique_ptr<BodyReceiver> Pages::receive(const RequestHead &head)
{
    return std::make_unique<FormReceiver>(*this, PageRequest{head.path, head.query, {}, head.languages, true});
}

} // namespace documentserver
