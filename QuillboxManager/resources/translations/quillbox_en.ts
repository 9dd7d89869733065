<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
<context>
    <name>BackUpMessages</name>
    <message>
        <source>400001</source>
        <translation>The server could not read the request. Update this client and try again.</translation>
    </message>
    <message>
        <source>401002</source>
        <translation>You are not signed in. Sign in first.</translation>
    </message>
    <message>
        <source>401038</source>
        <translation>The password change was not signed correctly. Update this client and try again.</translation>
    </message>
    <message>
        <source>403001</source>
        <translation>The server refused this operation.</translation>
    </message>
    <message>
        <source>403003</source>
        <translation>You do not have permission to view this document.</translation>
    </message>
    <message>
        <source>403024</source>
        <translation>There is not enough cloud storage. Free some space and try again.</translation>
    </message>
    <message>
        <source>403039</source>
        <translation>A document with this name already exists. Choose another name.</translation>
    </message>
    <message>
        <source>404001</source>
        <translation>The server does not support this. Ask your administrator to update it.</translation>
    </message>
    <message>
        <source>404002</source>
        <translation>The server has no such setting. Contact your administrator.</translation>
    </message>
    <message>
        <source>404006</source>
        <translation>The document does not exist. It may have been deleted or moved.</translation>
    </message>
    <message>
        <source>404404</source>
        <translation>The server does not support this. Ask your administrator to update it.</translation>
    </message>
    <message>
        <source>404444</source>
        <translation>The download failed. Try again.</translation>
    </message>
    <message>
        <source>405001</source>
        <translation>The server does not take requests of this kind. Check the address and the port.</translation>
    </message>
    <message>
        <source>413001</source>
        <translation>What was sent is larger than the server allows.</translation>
    </message>
    <message>
        <source>500001</source>
        <translation>The server had an internal error. Try again later.</translation>
    </message>
    <message>
        <source>503001</source>
        <translation>The server is busy. Try again later.</translation>
    </message>
</context>
<context>
    <name>Localizable</name>
    <message>
        <source>(错误码：%@)</source>
        <translation>(Error code: %@)</translation>
    </message>
    <message>
        <source>LoginButtonTitle</source>
        <translation>Sign in</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>OnlineHelp</source>
        <translation>https://help.quillbox.example/help?lang=en-us</translation>
    </message>
    <message>
        <source>OnlineTrain</source>
        <translation>https://help.quillbox.example/training?lang=en-us</translation>
    </message>
    <message>
        <source>QuickStartURL</source>
        <translation>https://help.quillbox.example/quickstart?lang=en-us</translation>
    </message>
    <message>
        <source>pwdcontrolInfo</source>
        <translation>Your administrator manages your password. To change it, contact your administrator.</translation>
    </message>
    <message>
        <source>两次输入的密码不一致。</source>
        <translation>The two new passwords do not match.</translation>
    </message>
    <message>
        <source>修改密码</source>
        <translation>Change Password</translation>
    </message>
    <message>
        <source>修改成功</source>
        <translation>Your password was changed.</translation>
    </message>
    <message>
        <source>共享审核员</source>
        <translation>Sharing reviewer</translation>
    </message>
    <message>
        <source>关于</source>
        <translation>About</translation>
    </message>
    <message>
        <source>发布时间</source>
        <translation>Released </translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>取消退出</source>
        <translation>Keep Working</translation>
    </message>
    <message>
        <source>安全管理员</source>
        <translation>Security administrator</translation>
    </message>
    <message>
        <source>定密审核员</source>
        <translation>Classification reviewer</translation>
    </message>
    <message>
        <source>审计管理员</source>
        <translation>Audit administrator</translation>
    </message>
    <message>
        <source>密码重置成功，请登录</source>
        <translation>Your password was reset. You can sign in now.</translation>
    </message>
    <message>
        <source>已使用%.2fG/共%.2fG</source>
        <translation>%.2fG used of %.2fG</translation>
    </message>
    <message>
        <source>已使用0.00G/共0.00G</source>
        <translation>0.00G used of 0.00G</translation>
    </message>
    <message>
        <source>已阅读并同意用户协议</source>
        <translation>I have read and accept the user agreement</translation>
    </message>
    <message>
        <source>常用</source>
        <translation>General</translation>
    </message>
    <message>
        <source>弱密码提示</source>
        <translation>Use 6 to 100 characters: letters, digits and special characters are allowed.</translation>
    </message>
    <message>
        <source>强制退出</source>
        <translation>Quit Anyway</translation>
    </message>
    <message>
        <source>强制退出可能导致未保存的修改失效</source>
        <translation>If you quit now, unsaved changes may be lost.</translation>
    </message>
    <message>
        <source>强密码提示</source>
        <translation>Use 10 to 100 characters with upper-case and lower-case letters, digits and special characters.</translation>
    </message>
    <message>
        <source>当前版本</source>
        <translation>Version </translation>
    </message>
    <message>
        <source>您不能在此位置上传文档</source>
        <translation>Documents cannot be uploaded to this location. Choose another folder.</translation>
    </message>
    <message>
        <source>您对目标文件夹&quot;%@&quot;没有下载权限</source>
        <translation>You do not have permission to download from the folder “%@”.</translation>
    </message>
    <message>
        <source>您对目标文件夹&quot;%@&quot;没有删除权限</source>
        <translation>You do not have permission to delete items in the folder “%@”.</translation>
    </message>
    <message>
        <source>您对目标文件夹&quot;%@&quot;没有新建权限</source>
        <translation>You do not have permission to create items in the folder “%@”.</translation>
    </message>
    <message>
        <source>您对选中的文件没有修改权限</source>
        <translation>You do not have permission to change the selected file.</translation>
    </message>
    <message>
        <source>您有在Quillbox中打开的文件未关闭</source>
        <translation>Files in Quillbox are still open</translation>
    </message>
    <message>
        <source>您的客户端已离线。</source>
        <translation>You are offline.</translation>
    </message>
    <message>
        <source>您的客户端已离线，无法上传文档。</source>
        <translation>You are offline, so the document cannot be uploaded.</translation>
    </message>
    <message>
        <source>您的客户端已离线，无法下载文档。</source>
        <translation>You are offline, so the document cannot be downloaded.</translation>
    </message>
    <message>
        <source>您编辑的文件版本和云端最新版本不一致,(在您&quot;关闭&quot;文件后)将自动将您保存的版本在原位置生成冲突文件&quot;%@&quot;</source>
        <translation>The file you edited differs from the latest version in the cloud. After you close it, your version will be saved in the same folder as the conflict file “%@”.</translation>
    </message>
    <message>
        <source>您输入旧密码错误次数超过限制，</source>
        <translation>Too many wrong old passwords. </translation>
    </message>
    <message>
        <source>您输入错误次数超过限制，</source>
        <translation>Too many wrong attempts. </translation>
    </message>
    <message>
        <source>所在路径：</source>
        <translation>Location: </translation>
    </message>
    <message>
        <source>打开云盘</source>
        <translation>Open Cloud Drive</translation>
    </message>
    <message>
        <source>搜索</source>
        <translation>Search…</translation>
    </message>
    <message>
        <source>文件直传</source>
        <translation>Direct Upload…</translation>
    </message>
    <message>
        <source>文档创建失败。</source>
        <translation>The document could not be created.</translation>
    </message>
    <message>
        <source>文档名称不能包含下列任何字符：\ / : * ? &quot; &lt; &gt; |</source>
        <translation>A document name cannot contain any of these characters: \ / : * ? &quot; &lt; &gt; |</translation>
    </message>
    <message>
        <source>文档审核员</source>
        <translation>Document reviewer</translation>
    </message>
    <message>
        <source>新密码不符合要求。</source>
        <translation>The new password does not meet the requirements.</translation>
    </message>
    <message>
        <source>新密码不能为空。</source>
        <translation>Enter a new password.</translation>
    </message>
    <message>
        <source>新密码不能和旧密码相同。</source>
        <translation>The new password must differ from the old one.</translation>
    </message>
    <message>
        <source>新密码：</source>
        <translation>New password:</translation>
    </message>
    <message>
        <source>无法执行上传操作</source>
        <translation>Cannot upload</translation>
    </message>
    <message>
        <source>无法执行上传操作，您的账号已被冻结</source>
        <translation>Cannot upload: your account is frozen.</translation>
    </message>
    <message>
        <source>无法执行上传操作，该文档已被冻结</source>
        <translation>Cannot upload: the document is frozen.</translation>
    </message>
    <message>
        <source>无法执行下载操作</source>
        <translation>Cannot download</translation>
    </message>
    <message>
        <source>无法执行删除操作</source>
        <translation>Cannot delete</translation>
    </message>
    <message>
        <source>无法执行删除操作，您没有对发送文件箱目录的操作权限。</source>
        <translation>Cannot delete: you do not have permission to change the outbox folder.</translation>
    </message>
    <message>
        <source>无法执行收藏操作，您对文件夹&quot;%@&quot;没有显示权限</source>
        <translation>Cannot add to favorites: you do not have permission to view the folder “%@”.</translation>
    </message>
    <message>
        <source>无法执行新建操作，您的账号已被冻结</source>
        <translation>Cannot create: your account is frozen.</translation>
    </message>
    <message>
        <source>无法执行新建操作，该文档已被冻结</source>
        <translation>Cannot create: the document is frozen.</translation>
    </message>
    <message>
        <source>无法执行此操作，文件正在上传。</source>
        <translation>This cannot be done while the file is being uploaded.</translation>
    </message>
    <message>
        <source>无法执行移动操作，您没有对发送文件箱目录的操作权限。</source>
        <translation>Cannot move: you do not have permission to change the outbox folder.</translation>
    </message>
    <message>
        <source>无法执行移动操作，您的账号已被冻结</source>
        <translation>Cannot move: your account is frozen.</translation>
    </message>
    <message>
        <source>无法执行移动操作，该文档已被冻结</source>
        <translation>Cannot move: the document is frozen.</translation>
    </message>
    <message>
        <source>无法执行重命名操作，您没有对发送文件箱目录的操作权限。</source>
        <translation>Cannot rename: you do not have permission to change the outbox folder.</translation>
    </message>
    <message>
        <source>无法执行重命名操作，您的账号已被冻结</source>
        <translation>Cannot rename: your account is frozen.</translation>
    </message>
    <message>
        <source>无法执行重命名操作，操作的对象类型不正确</source>
        <translation>Cannot rename: items of this kind cannot be renamed.</translation>
    </message>
    <message>
        <source>无法执行重命名操作，该文档已冻结</source>
        <translation>Cannot rename: the document is frozen.</translation>
    </message>
    <message>
        <source>旧密码不能为空。</source>
        <translation>Enter your old password.</translation>
    </message>
    <message>
        <source>旧密码：</source>
        <translation>Old password:</translation>
    </message>
    <message>
        <source>显示名</source>
        <translation>Display name</translation>
    </message>
    <message>
        <source>普通用户</source>
        <translation>Regular user</translation>
    </message>
    <message>
        <source>暂不</source>
        <translation>Not Now</translation>
    </message>
    <message>
        <source>查找定位</source>
        <translation>Find and Locate</translation>
    </message>
    <message>
        <source>注销或退出时，自动清除所有缓存</source>
        <translation>Clear all cached files when I sign out or quit</translation>
    </message>
    <message>
        <source>版权所有</source>
        <translation>© 2026 Velto. All rights reserved.</translation>
    </message>
    <message>
        <source>现在安装</source>
        <translation>Install Now</translation>
    </message>
    <message>
        <source>用户协议</source>
        <translation>User Agreement</translation>
    </message>
    <message>
        <source>用户角色</source>
        <translation>Roles</translation>
    </message>
    <message>
        <source>目标文件夹不存在，可能其所在路径发生变更</source>
        <translation>The destination folder does not exist. It may have been moved or renamed.</translation>
    </message>
    <message>
        <source>直属部门</source>
        <translation>Departments</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>确认新密码不能为空。</source>
        <translation>Enter the new password again.</translation>
    </message>
    <message>
        <source>确认新密码：</source>
        <translation>Confirm new password:</translation>
    </message>
    <message>
        <source>管理员已关闭忘记密码重置功能</source>
        <translation>Your administrator has switched off password reset. Contact your administrator for help.</translation>
    </message>
    <message>
        <source>管理员已禁止此类客户端登陆</source>
        <translation>Your administrator does not allow this kind of client to sign in.</translation>
    </message>
    <message>
        <source>系统管理员</source>
        <translation>System administrator</translation>
    </message>
    <message>
        <source>组织审计员</source>
        <translation>Organization auditor</translation>
    </message>
    <message>
        <source>组织管理员</source>
        <translation>Organization administrator</translation>
    </message>
    <message>
        <source>统一的文档云</source>
        <translation>One cloud for all your documents</translation>
    </message>
    <message>
        <source>网站备案信息</source>
        <translation>Site registration</translation>
    </message>
    <message>
        <source>警告</source>
        <translation>Warning</translation>
    </message>
    <message>
        <source>设置</source>
        <translation>Settings</translation>
    </message>
    <message>
        <source>设置未能保存</source>
        <translation>The setting could not be saved</translation>
    </message>
    <message>
        <source>请安装云盘所需依赖库FUSE %@</source>
        <translation>The cloud drive needs FUSE %@. Please install it.</translation>
    </message>
    <message>
        <source>请检查磁盘剩余空间后重试</source>
        <translation>Check the free space on your disk and try again</translation>
    </message>
    <message>
        <source>请检查网络状态后重试</source>
        <translation>Check your network connection and try again.</translation>
    </message>
    <message>
        <source>请输入SharedLink地址或HTTPLink地址</source>
        <translation>Enter a SharedLink or HTTPLink address</translation>
    </message>
    <message>
        <source>账号</source>
        <translation>Account</translation>
    </message>
    <message>
        <source>账号：</source>
        <translation>Account:</translation>
    </message>
    <message>
        <source>账户</source>
        <translation>Account</translation>
    </message>
    <message>
        <source>超级管理员</source>
        <translation>Super administrator</translation>
    </message>
    <message>
        <source>路径&quot;%@&quot;不存在，可能其所在路径发生变更</source>
        <translation>The path “%@” does not exist. It may have been moved or renamed.</translation>
    </message>
    <message>
        <source>邮箱</source>
        <translation>E-mail</translation>
    </message>
    <message>
        <source>配额空间</source>
        <translation>Storage</translation>
    </message>
    <message>
        <source>重置密码</source>
        <translation>Reset Password</translation>
    </message>
</context>
<context>
    <name>LoginVerify</name>
    <message>
        <source>401003</source>
        <translation>The account or password has changed. Go back and sign in again.</translation>
    </message>
    <message>
        <source>401004</source>
        <translation>This account has been disabled. Contact your administrator.</translation>
    </message>
    <message>
        <source>401009</source>
        <translation>The sign-in ticket is not valid or has expired. Go back and sign in again.</translation>
    </message>
    <message>
        <source>401011</source>
        <translation>Your administrator does not allow this kind of client to sign in.</translation>
    </message>
    <message>
        <source>401020</source>
        <translation>The account is locked. Try again in 1 hour.</translation>
    </message>
    <message>
        <source>401021</source>
        <translation>Signing in needs a picture code. Go back and sign in again.</translation>
    </message>
    <message>
        <source>401031</source>
        <translation>The picture code is incorrect or has expired. Go back and sign in again.</translation>
    </message>
    <message>
        <source>404029</source>
        <translation>The SMS server cannot be reached. Contact your administrator.</translation>
    </message>
    <message>
        <source>phonenumber</source>
        <translation>A code was sent to </translation>
    </message>
    <message>
        <source>pleaseinputvcode</source>
        <translation>Verification code</translation>
    </message>
    <message>
        <source>pleaseinputvcode1</source>
        <translation>Enter the code that you received.</translation>
    </message>
    <message>
        <source>sendvcode</source>
        <translation>Send code</translation>
    </message>
    <message>
        <source>sendvcodeagain</source>
        <translation>Send again in </translation>
    </message>
    <message>
        <source>verify</source>
        <translation>Verify</translation>
    </message>
    <message>
        <source>再次发送验证码的间隔时间必须大于60s</source>
        <translation>A code was sent less than 60 s ago and is still valid.</translation>
    </message>
    <message>
        <source>登录验证</source>
        <translation>Sign-in Verification</translation>
    </message>
    <message>
        <source>请输入动态密码</source>
        <translation>One-time password</translation>
    </message>
    <message>
        <source>验证码错误次数过多</source>
        <translation>Too many wrong codes. Send a new one.</translation>
    </message>
</context>
<context>
    <name>LoginWindowController</name>
    <message>
        <source>AutoLogin.title</source>
        <translation>Automatic sign-in</translation>
    </message>
    <message>
        <source>ChangeNormalMode.title</source>
        <translation>Use account and password</translation>
    </message>
    <message>
        <source>ChangeThirdMode.title</source>
        <translation>Single sign-on</translation>
    </message>
    <message>
        <source>ForgetPWD.title</source>
        <translation>Forgot password?</translation>
    </message>
    <message>
        <source>NoServerConfig</source>
        <translation>Cannot reach the server. Check your network or the server settings, then try again.</translation>
    </message>
    <message>
        <source>NoSession</source>
        <translation>The server did not complete the sign-in. Try again later.</translation>
    </message>
    <message>
        <source>Password.placeholderString</source>
        <translation>Password</translation>
    </message>
    <message>
        <source>RememberPassword.title</source>
        <translation>Remember password</translation>
    </message>
    <message>
        <source>Retry.title</source>
        <translation>Try again</translation>
    </message>
    <message>
        <source>ServerSetting.title</source>
        <translation>Server settings</translation>
    </message>
    <message>
        <source>ThirdLogin.badAddress</source>
        <translation>The address for single sign-on is not valid. Contact your administrator.</translation>
    </message>
    <message>
        <source>ThirdLogin.title</source>
        <translation>Single sign-on</translation>
    </message>
    <message>
        <source>Username.placeholderString</source>
        <translation>Account</translation>
    </message>
    <message>
        <source>Vcode.accessibleName</source>
        <translation>Picture code, press for another one</translation>
    </message>
    <message>
        <source>Vcode.placeholderString</source>
        <translation>Verification code</translation>
    </message>
    <message>
        <source>Vcode.unavailable</source>
        <translation>Try again</translation>
    </message>
</context>
<context>
    <name>MainMenu</name>
    <message>
        <source>ChangePassword.title</source>
        <translation>Change Password…</translation>
    </message>
    <message>
        <source>Disk.title</source>
        <translation>Open Cloud Drive</translation>
    </message>
    <message>
        <source>Exit.title</source>
        <translation>Quit Quillbox</translation>
    </message>
    <message>
        <source>Help.title</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>JwH-8K-t3P.title</source>
        <translation>Open Cloud Drive</translation>
    </message>
    <message>
        <source>Logout.title</source>
        <translation>Sign Out</translation>
    </message>
    <message>
        <source>OnlineHelp.title</source>
        <translation>Online Help</translation>
    </message>
    <message>
        <source>OnlineTrain.title</source>
        <translation>Online Training</translation>
    </message>
    <message>
        <source>QuickStart.title</source>
        <translation>Quick Start</translation>
    </message>
    <message>
        <source>Safari.title</source>
        <translation>Open Web Client</translation>
    </message>
    <message>
        <source>Search.title</source>
        <translation>Locate Shared Link…</translation>
    </message>
    <message>
        <source>SearchMenu.titile</source>
        <translation>Search…</translation>
    </message>
    <message>
        <source>Setting.title</source>
        <translation>Settings…</translation>
    </message>
    <message>
        <source>Synchronization.title</source>
        <translation>Transfers</translation>
    </message>
    <message>
        <source>favorites.title</source>
        <translation>Favorites</translation>
    </message>
    <message>
        <source>ghO-sy-2oG.title</source>
        <translation>Open Web Client</translation>
    </message>
    <message>
        <source>搜索</source>
        <translation>Search…</translation>
    </message>
    <message>
        <source>文件直传</source>
        <translation>Direct Upload…</translation>
    </message>
</context>
<context>
    <name>Messages</name>
    <message>
        <source>400002</source>
        <translation>The server did not accept the request. Check your entries and try again.</translation>
    </message>
    <message>
        <source>400003</source>
        <translation>The server has no update information for this client.</translation>
    </message>
    <message>
        <source>400012</source>
        <translation>The name contains characters that are not allowed. Choose another name.</translation>
    </message>
    <message>
        <source>401001</source>
        <translation>Your session has expired. Sign in again.</translation>
    </message>
    <message>
        <source>401003</source>
        <translation>The account or password is incorrect.</translation>
    </message>
    <message>
        <source>401004</source>
        <translation>This account has been disabled. Contact your administrator.</translation>
    </message>
    <message>
        <source>401009</source>
        <translation>The single sign-on ticket is not valid or has expired. Sign in again.</translation>
    </message>
    <message>
        <source>401011</source>
        <translation>Your administrator does not allow this kind of client to sign in.</translation>
    </message>
    <message>
        <source>401012</source>
        <translation>You are using an initial password. Change it to sign in.</translation>
    </message>
    <message>
        <source>401013</source>
        <translation>Your password has expired. Change it to sign in.</translation>
    </message>
    <message>
        <source>401017</source>
        <translation>Your password is not strong enough. Change it to sign in.</translation>
    </message>
    <message>
        <source>401020</source>
        <translation>The account is locked. Try again in 1 hour.</translation>
    </message>
    <message>
        <source>401021</source>
        <translation>Enter the code shown in the picture.</translation>
    </message>
    <message>
        <source>401026</source>
        <translation>Your administrator manages this account's password. You cannot change it yourself.</translation>
    </message>
    <message>
        <source>401031</source>
        <translation>The picture code is incorrect or has expired. Enter the new one.</translation>
    </message>
    <message>
        <source>401033</source>
        <translation>Your administrator does not allow your account to sign in. Contact your administrator.</translation>
    </message>
    <message>
        <source>401035</source>
        <translation>The new password must differ from the old one.</translation>
    </message>
    <message>
        <source>401037</source>
        <translation>Enter the code that was sent to you to finish signing in.</translation>
    </message>
    <message>
        <source>401039</source>
        <translation>The verification code is incorrect or has expired. Enter it again.</translation>
    </message>
    <message>
        <source>401056</source>
        <translation>The one-time password is incorrect or was already used. Enter a new one.</translation>
    </message>
    <message>
        <source>401058</source>
        <translation>Your account has no phone number, e-mail address or one-time password for verification. Contact your administrator.</translation>
    </message>
    <message>
        <source>401059</source>
        <translation>A code was sent a moment ago. Wait before you ask for another.</translation>
    </message>
    <message>
        <source>401064</source>
        <translation>The server does not use verification codes. Sign in again.</translation>
    </message>
    <message>
        <source>403002</source>
        <translation>You do not have permission to do this.</translation>
    </message>
    <message>
        <source>403031</source>
        <translation>The file is locked by another user.</translation>
    </message>
    <message>
        <source>403058</source>
        <translation>The verification code could not be sent. Try again later or contact your administrator.</translation>
    </message>
    <message>
        <source>403070</source>
        <translation>The file is larger than allowed.</translation>
    </message>
    <message>
        <source>403155</source>
        <translation>You do not have permission to change the outbox folder.</translation>
    </message>
    <message>
        <source>403171</source>
        <translation>Your account is frozen. Contact your administrator.</translation>
    </message>
    <message>
        <source>403172</source>
        <translation>The document is frozen.</translation>
    </message>
    <message>
        <source>403175</source>
        <translation>The file is locked by another user and cannot be changed.</translation>
    </message>
    <message>
        <source>403176</source>
        <translation>The file is locked by another user and cannot be moved.</translation>
    </message>
    <message>
        <source>403179</source>
        <translation>Your identity has not been verified. Verify it first.</translation>
    </message>
    <message>
        <source>403180</source>
        <translation>The identity of the document's creator has not been verified.</translation>
    </message>
    <message>
        <source>403181</source>
        <translation>Files of this type may not be uploaded.</translation>
    </message>
    <message>
        <source>403182</source>
        <translation>Your administrator has banned this file type.</translation>
    </message>
    <message>
        <source>404029</source>
        <translation>The SMS server cannot be reached, so no code was sent. Contact your administrator.</translation>
    </message>
    <message>
        <source>404031</source>
        <translation>The SMS or mail server cannot be reached, so no code was sent. Contact your administrator.</translation>
    </message>
    <message>
        <source>AlertLoginFailedBack</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>AlertLoginFailedGo</source>
        <translation>Change Password</translation>
    </message>
    <message>
        <source>AlertLoginFailedTitle</source>
        <translation>Change your password first</translation>
    </message>
    <message>
        <source>InputDomainError</source>
        <translation>A server name may contain only letters, digits, “-” and “.”.</translation>
    </message>
    <message>
        <source>InputIPError</source>
        <translation>This IP address is not valid. Enter four numbers from 0 to 255, such as 192.168.1.10.</translation>
    </message>
    <message>
        <source>LoginFailedBy</source>
        <translation>Sign-in failed: </translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>ServerConfigChecking</source>
        <translation>Connecting to the server…</translation>
    </message>
    <message>
        <source>ServerConfigFailed</source>
        <translation>Cannot reach the server. Check the address, the port and your network.</translation>
    </message>
    <message>
        <source>ServerConfigIllegalParameter</source>
        <translation>The server did not accept this client's version information. Contact your administrator.</translation>
    </message>
    <message>
        <source>ServerErrorWithoutText</source>
        <translation>The server reported error %@.</translation>
    </message>
    <message>
        <source>TransportBadReply</source>
        <translation>The server's answer could not be understood. Check that the address and port belong to a document server.</translation>
    </message>
    <message>
        <source>TransportBadURL</source>
        <translation>The server address is not valid. Check the address and the port.</translation>
    </message>
    <message>
        <source>TransportBodyUnreadable</source>
        <translation>The document could not be read completely.</translation>
    </message>
    <message>
        <source>TransportCancelled</source>
        <translation>The operation was cancelled.</translation>
    </message>
    <message>
        <source>TransportCannotConnect</source>
        <translation>Cannot connect to the server. Check its address and port and your network.</translation>
    </message>
    <message>
        <source>TransportCannotFindHost</source>
        <translation>The server could not be found. Check that its address is right.</translation>
    </message>
    <message>
        <source>TransportCannotWrite</source>
        <translation>The document could not be stored.</translation>
    </message>
    <message>
        <source>TransportConnectionLost</source>
        <translation>The connection to the server was lost. Try again.</translation>
    </message>
    <message>
        <source>TransportSessionNotKept</source>
        <translation>The sign-in could not be saved. Is the disk full?</translation>
    </message>
    <message>
        <source>TransportTLS</source>
        <translation>A secure connection to the server could not be made. Contact your administrator.</translation>
    </message>
    <message>
        <source>TransportTimedOut</source>
        <translation>The server did not answer in time. Try again later.</translation>
    </message>
    <message>
        <source>TransportTooLarge</source>
        <translation>The server's answer is too large and was not received.</translation>
    </message>
    <message>
        <source>TransportTooManyRedirects</source>
        <translation>The server redirected too many times. Check the address and the port.</translation>
    </message>
    <message>
        <source>UpdateCannotStore</source>
        <translation>The update could not be stored in your Downloads folder. Check the folder's permissions.</translation>
    </message>
    <message>
        <source>UpdateHttpStatus</source>
        <translation>The server did not hand out the update (status %@). Try again later or contact your administrator.</translation>
    </message>
    <message>
        <source>UpdateIncomplete</source>
        <translation>The update did not arrive completely and was not installed. Try again later.</translation>
    </message>
    <message>
        <source>UpdateNameRefused</source>
        <translation>The update cannot be stored under its name “%@”. Contact your administrator.</translation>
    </message>
    <message>
        <source>UpdateNoInstaller</source>
        <translation>The installer could not be started. Install %@ by hand.</translation>
    </message>
    <message>
        <source>UpdateNoSpace</source>
        <translation>There is not enough disk space for the update. Free some and try again.</translation>
    </message>
    <message>
        <source>UpdateNotAnImage</source>
        <translation>What the server sent is not an update. Check whether your network asks you to sign in, or contact your administrator.</translation>
    </message>
    <message>
        <source>UpdateNotYours</source>
        <translation>You may not replace this installation. Ask your administrator for the new version.</translation>
    </message>
    <message>
        <source>UpdateTargetTaken</source>
        <translation>“%@” in your Downloads folder cannot be replaced. Move it away and try again.</translation>
    </message>
</context>
<context>
    <name>QBAlertClearCacheRemind</name>
    <message>
        <source>跳过之后所有相同的冲突提示</source>
        <translation>Do not show this kind of conflict again</translation>
    </message>
</context>
<context>
    <name>QBError</name>
    <message>
        <source>您未完成实名认证，无法执行上传操作。</source>
        <translation>Cannot upload: your identity has not been verified.</translation>
    </message>
    <message>
        <source>您未完成实名认证，无法执行新建操作。</source>
        <translation>Cannot create: your identity has not been verified.</translation>
    </message>
    <message>
        <source>您未完成实名认证，无法执行移动操作。</source>
        <translation>Cannot move: your identity has not been verified.</translation>
    </message>
    <message>
        <source>您未完成实名认证，无法执行重名操作。</source>
        <translation>Cannot rename: your identity has not been verified.</translation>
    </message>
    <message>
        <source>打开SharedLink失败</source>
        <translation>The SharedLink could not be opened</translation>
    </message>
    <message>
        <source>文件 “%@” 已大于%@文件大小的限制</source>
        <translation>The file “%@” is larger than the limit of %@.</translation>
    </message>
    <message>
        <source>文件 “%@” 的格式已被禁止上传</source>
        <translation>Files of the type of “%@” may not be uploaded.</translation>
    </message>
    <message>
        <source>文件名不能超过255个字符</source>
        <translation>A file name cannot be longer than 255 characters.</translation>
    </message>
    <message>
        <source>文件名或路径过长</source>
        <translation>The file name or path is too long.</translation>
    </message>
    <message>
        <source>文件名过长</source>
        <translation>The file name is too long.</translation>
    </message>
    <message>
        <source>无法执行删除操作，文件 “&lt;%@&gt;” 已被 &lt;%@&gt; 锁定</source>
        <translation>Cannot delete: the file “&lt;%@&gt;” is locked by &lt;%@&gt;.</translation>
    </message>
    <message>
        <source>无法执行移动操作，文件 “&lt;%@&gt;” 已被 &lt;%@&gt; 锁定</source>
        <translation>Cannot move: the file “&lt;%@&gt;” is locked by &lt;%@&gt;.</translation>
    </message>
    <message>
        <source>无法执行还原操作，当前文件已被 %@ 锁定</source>
        <translation>Cannot restore: the file is locked by %@.</translation>
    </message>
    <message>
        <source>无法执行重命名操作</source>
        <translation>Cannot rename</translation>
    </message>
    <message>
        <source>无法执行重命名操作，文件 “&lt;%@&gt;” 已被 &lt;%@&gt; 锁定</source>
        <translation>Cannot rename: the file “&lt;%@&gt;” is locked by &lt;%@&gt;.</translation>
    </message>
    <message>
        <source>无法直传文件</source>
        <translation>Direct upload is not possible</translation>
    </message>
    <message>
        <source>未找到链接指向的文档</source>
        <translation>The document was not found. Check the link, and whether you may open this document.</translation>
    </message>
    <message>
        <source>没有可以上传的个人文件夹，请检查网络后重试</source>
        <translation>None of your own folders can be reached. Check the connection and try again.</translation>
    </message>
    <message>
        <source>立即认证</source>
        <translation>Verify Now</translation>
    </message>
    <message>
        <source>该文档的创建者未完成实名认证，无法在其文档下执行上传操作。</source>
        <translation>Cannot upload here: the identity of the document's creator has not been verified.</translation>
    </message>
    <message>
        <source>该文档的创建者未完成实名认证，无法在其文档下执行新建操作。</source>
        <translation>Cannot create here: the identity of the document's creator has not been verified.</translation>
    </message>
    <message>
        <source>该文档的创建者未完成实名认证，无法在其文档下执行移动操作。</source>
        <translation>Cannot move here: the identity of the document's creator has not been verified.</translation>
    </message>
    <message>
        <source>该文档的创建者未完成实名认证，无法在其文档下执行重命名操作。</source>
        <translation>Cannot rename here: the identity of the document's creator has not been verified.</translation>
    </message>
    <message>
        <source>重命名失败，文件 “%@” 的格式已被管理员禁用</source>
        <translation>Cannot rename: your administrator has banned the type of the file “%@”.</translation>
    </message>
</context>
<context>
    <name>QuickStart</name>
    <message>
        <source>快速入门</source>
        <translation>Quick Start</translation>
    </message>
</context>
<context>
    <name>ServerSettingWindowController</name>
    <message>
        <source>AppPortTitle</source>
        <translation>Port</translation>
    </message>
    <message>
        <source>Heading.title</source>
        <translation>Server settings</translation>
    </message>
    <message>
        <source>ServerAddressTitle</source>
        <translation>Server address</translation>
    </message>
</context>
<context>
    <name>ServicePanel</name>
    <message>
        <source>copying</source>
        <translation>Copying…</translation>
    </message>
    <message>
        <source>done</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>Failed</translation>
    </message>
    <message>
        <source>waiting</source>
        <translation>Waiting to be saved</translation>
    </message>
    <message>
        <source>上传完成</source>
        <translation>Finished uploading.</translation>
    </message>
    <message>
        <source>传输列表</source>
        <translation>Transfers</translation>
    </message>
    <message>
        <source>位置</source>
        <translation>Location</translation>
    </message>
    <message>
        <source>名称</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>搜索文档</source>
        <translation>Search Documents</translation>
    </message>
    <message>
        <source>收藏</source>
        <translation>Favorites</translation>
    </message>
    <message>
        <source>文件直传</source>
        <translation>Direct Upload</translation>
    </message>
    <message>
        <source>未找到文档</source>
        <translation>No documents were found.</translation>
    </message>
    <message>
        <source>未能读取全部内容，请检查网络后重试</source>
        <translation>Not everything could be read. Check your network connection and try again.</translation>
    </message>
    <message>
        <source>正在上传…</source>
        <translation>Uploading…</translation>
    </message>
    <message>
        <source>正在加载…</source>
        <translation>Loading…</translation>
    </message>
    <message>
        <source>正在搜索…</source>
        <translation>Searching…</translation>
    </message>
    <message>
        <source>没有收藏的文档</source>
        <translation>You have no favorites yet.</translation>
    </message>
    <message>
        <source>没有正在进行的传输</source>
        <translation>No transfers are in progress.</translation>
    </message>
    <message>
        <source>状态</source>
        <translation>State</translation>
    </message>
    <message>
        <source>结果过多，仅显示一部分</source>
        <translation>There are more results than can be shown.</translation>
    </message>
    <message>
        <source>输入文件名</source>
        <translation>Type a part of a file name and press Return</translation>
    </message>
    <message>
        <source>部分文件上传失败</source>
        <translation>Some files could not be uploaded. Please try again later.</translation>
    </message>
</context>
<context>
    <name>ThirdLoginWindowController</name>
    <message>
        <source>failed</source>
        <translation>Sign-in failed</translation>
    </message>
    <message>
        <source>登录</source>
        <translation>Sign in</translation>
    </message>
</context>
<context>
    <name>UpdateWindow</name>
    <message>
        <source>以后再说</source>
        <translation>Later</translation>
    </message>
    <message>
        <source>发现新版本%@，是否需要更新？</source>
        <translation>Version %@ is available. Update now?</translation>
    </message>
    <message>
        <source>当前版本%@</source>
        <translation>You have version %@</translation>
    </message>
    <message>
        <source>正在更新，请稍候......</source>
        <translation>Updating, please wait…</translation>
    </message>
    <message>
        <source>立即更新</source>
        <translation>Update Now</translation>
    </message>
</context>
<context>
    <name>WebPanel</name>
    <message>
        <source>Crash.text</source>
        <translation>The program that shows the page has stopped, and what you typed was not kept. Reload the page.</translation>
    </message>
    <message>
        <source>Crash.title</source>
        <translation>The page stopped unexpectedly</translation>
    </message>
    <message>
        <source>LoadError.text</source>
        <translation>Check your network connection, then reload. If it still does not open, ask your administrator.</translation>
    </message>
    <message>
        <source>LoadError.title</source>
        <translation>The page could not be opened</translation>
    </message>
    <message>
        <source>NoAnswer.text</source>
        <translation>Nothing was shown within 30 seconds. Reload it in a moment.</translation>
    </message>
    <message>
        <source>NoAnswer.title</source>
        <translation>The page does not answer</translation>
    </message>
    <message>
        <source>NoPlugin.text</source>
        <translation>The part of the application that shows web pages is missing or damaged. Install the application again, or open the page in your browser.</translation>
    </message>
    <message>
        <source>NoPlugin.title</source>
        <translation>Web pages cannot be shown here</translation>
    </message>
    <message>
        <source>back</source>
        <translation>Back</translation>
    </message>
    <message>
        <source>loading</source>
        <translation>Opening the page…</translation>
    </message>
    <message>
        <source>openInBrowser</source>
        <translation>Open in browser</translation>
    </message>
    <message>
        <source>reload</source>
        <translation>Reload</translation>
    </message>
</context>
</TS>
