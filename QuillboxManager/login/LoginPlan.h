#pragma once

#include <QJsonObject>
#include <QString>
#include <QVariantMap>

#include <optional>

/// What the server's login configuration means for the login window. A value; any thread.
struct LoginPlan {
    enum class Face { Normal, ThirdLogin };
    /// What the code box of the normal face is for.
    enum class CodeField { None, Picture, OneTimePassword };

    static LoginPlan of(const QJsonObject &dicAuthInfo);
    /// A remembered single-sign-on configuration ("ThirdPartyDic") leaves the user no password face to come back to.
    static bool hidesLogin(const QVariantMap &thirdPartyDic);

    Face face = Face::Normal;

    // The normal face.
    bool changeThirdModeVisible = false; ///< a way to the single-sign-on face
    bool forgetPWDVisible = false;
    bool pictureCodeEnabled = false;       ///< the server may demand a picture code
    bool pictureCodeAtOnce = false;        ///< and does so before the first attempt
    bool oneTimePassword = false;          ///< typed on the login window itself
    bool codeBySMS = false;                ///< asked for in the verification window
    bool defaultsAfterPictureCode = false; ///< the remembered account is filled in after the picture-code rule

    // The single-sign-on face.
    bool changeNormalModeVisible = false; ///< a way back to account and password
    QString loginButtonText;              ///< null: the button keeps its title
    bool autoCasRedirect = false;         ///< leave for the authenticator without a click
    QString authServer;                   ///< as the server gave it, not checked
    QString authID;

    /// Values to keep for the request of a second-factor code; absent: keep the ones of an earlier start.
    struct CodeWays {
        bool bySMS = false;
        bool byEmail = false;
    };
    std::optional<CodeWays> codeWays;

    /// Such a code, asked for earlier, is of use with this configuration as well.
    bool takesCode(CodeField field) const
    {
        return (field == CodeField::Picture && pictureCodeEnabled) ||
               (field == CodeField::OneTimePassword && oneTimePassword);
    }
    bool autoLoginHidden() const { return pictureCodeEnabled || oneTimePassword || codeBySMS; }
    /// Unattended sign-in cannot work with this server.
    bool quitAutoLogin() const { return autoLoginHidden(); }
};
