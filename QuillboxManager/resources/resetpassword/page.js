"use strict";

(() => {
  const PATIENCE = 15 * 1000; // milliseconds to wait for initQB

  const element = (id) => document.getElementById(id);
  let texts = resetTexts["en-us"];
  let server = null;
  let account = "";
  let isStrong = false;
  let codeWasSent = false;
  let mayResend = 0; // when, in milliseconds
  let ticking = 0;
  let stage = 0; // changes with every form that is shown; answers from before are dropped

  function text(name, value = "") {
    return String(texts[name] ?? texts.failed).replace("%1", () => String(value));
  }

  function explain(error) {
    if (!(error instanceof CallError))
      return text("misunderstood");
    if (error.reason === 401020 && error.value === "")
      return text("failed", error.reason);
    return Object.hasOwn(texts, error.reason) ? text(error.reason, error.value) : text("failed", error.reason);
  }

  function show(form) {
    ++stage;
    for (const id of ["accountForm", "passwordForm", "done"])
      element(id).hidden = id !== form;
  }

  /** An error line under a form, with the field that it is about. */
  function complain(line, message, field = null) {
    for (const input of document.querySelectorAll("input"))
      input.removeAttribute("aria-invalid");
    element(line).textContent = message;
    if (field) {
      field.setAttribute("aria-invalid", "true");
      field.focus();
    }
  }

  function applyTexts(language) {
    texts = resetTexts[language];
    document.documentElement.lang = { "zh-cn": "zh-CN", "zh-tw": "zh-TW" }[language] ?? "en";
    for (const labelled of document.querySelectorAll("[data-text]"))
      labelled.textContent = text(labelled.dataset.text);
  }

  /** Runs one call with the button disabled; `done` gets the answer while the form stands that asked. */
  async function run(button, line, call, done) {
    const mine = stage;
    button.disabled = true;
    complain(line, "");
    let finish = null;
    try {
      const answer = await call();
      finish = () => done(answer);
    } catch (error) {
      finish = () => complain(line, explain(error));
    }
    if (mine !== stage)
      return;
    button.disabled = false;
    finish();
    showCountdown();
  }

  function wayChoice(way, isFirst) {
    const label = document.createElement("label");
    label.className = "way";
    const input = document.createElement("input");
    Object.assign(input, { type: "radio", name: "way", value: way.name, checked: isFirst });
    label.append(input, document.createTextNode(text(way.name, way.destination)));
    return label;
  }

  function offer(answer) {
    isStrong = answer.strong;
    codeWasSent = false;
    mayResend = 0;
    element("forAccount").textContent = text("forAccount", account);
    element("wayChoices").replaceChildren(...answer.ways.map((way, i) => wayChoice(way, i === 0)));
    element("policy").textContent = text(isStrong ? "strongPolicy" : "weakPolicy");
    element("status").textContent = "";
    for (const id of ["code", "newPassword", "repeated"])
      element(id).value = "";
    complain("passwordError", "");
    show("passwordForm");
    element("reset").disabled = false;
    element("send").disabled = false;
    showCountdown();
    document.querySelector("#wayChoices input").focus();
  }

  function showCountdown() {
    const seconds = Math.ceil((mayResend - Date.now()) / 1000);
    const button = element("send");
    if (seconds > 0) {
      button.disabled = true;
      button.textContent = text("resendIn", seconds);
      ticking ||= setInterval(showCountdown, 200);
      return;
    }
    button.textContent = text(codeWasSent ? "resend" : "send");
    if (ticking)
      button.disabled = false;
    clearInterval(ticking);
    ticking = 0;
  }

  function codeIsOnItsWay(sent) {
    codeWasSent = true;
    mayResend = Date.now() + sent.interval * 1000;
    element("status").textContent = text(sent.duplicate ? "duplicate" : "sent", sent.destination);
    element("code").focus();
  }

  function isAcceptable(password) {
    if (!/^[!-~]+$/.test(password) || password.length < (isStrong ? 8 : 6) || password.length > 100)
      return false;
    return !isStrong || [/[A-Z]/, /[a-z]/, /[0-9]/, /[^A-Za-z0-9]/].every((kind) => kind.test(password));
  }

  /** The field that keeps the form from being sent and the name of the text that says why; null: none. */
  function obstacle() {
    if (!codeWasSent)
      return [element("send"), "notSent"];
    if (!element("code").value.trim())
      return [element("code"), "needCode"];
    if (!isAcceptable(element("newPassword").value))
      return [element("newPassword"), "needPassword"];
    if (element("newPassword").value !== element("repeated").value)
      return [element("repeated"), "notEqual"];
    return null;
  }

  async function resetPassword() {
    const code = element("code").value.trim();
    let encrypted = "";
    try {
      encrypted = passwordEncryption.encrypt(element("newPassword").value, await passwordEncryption.readCertificate());
    } catch {
      throw new CallError("noKey");
    }
    return server.resetPassword(account, code, encrypted);
  }

  function passwordIsReset() {
    for (const id of ["code", "newPassword", "repeated"])
      element(id).value = "";
    show("done");
    element("done").focus();
    window.webkit?.messageHandlers?.showMessage?.postMessage("resetDone");
  }

  function submitAccount(event) {
    event.preventDefault();
    account = element("account").value.trim();
    if (!account)
      complain("accountError", text("needAccount"), element("account"));
    else if (!element("next").disabled)
      run(element("next"), "accountError", () => server.waysOf(account), offer);
  }

  function askForCode() {
    const way = document.querySelector("#wayChoices input:checked").value;
    run(element("send"), "passwordError", () => server.sendCode(account, way), codeIsOnItsWay);
  }

  function submitPassword(event) {
    event.preventDefault();
    const found = obstacle();
    if (found)
      complain("passwordError", text(found[1]), found[0]);
    else if (!element("reset").disabled)
      run(element("reset"), "passwordError", resetPassword, passwordIsReset);
  }

  function goBack() {
    mayResend = 0;
    show("accountForm");
    complain("accountError", "");
    element("next").disabled = false;
    element("account").focus();
  }

  /** Called by the program once the page is there, and again after a reload of it. */
  window.initQB = (language, baseURL, port) => {
    applyTexts(Object.hasOwn(resetTexts, language) ? language : "en-us");
    if (server)
      return;
    if (!/^https?:\/\/[^/?#\s]+$/.test(baseURL) || !Number.isInteger(port) || port < 1 || port > 65535)
      return complain("accountError", text("notReady"));
    server = new ResetServer(`${baseURL}:${port}`);
    complain("accountError", "");
    element("next").disabled = false;
    element("account").focus();
  };

  element("accountForm").addEventListener("submit", submitAccount);
  element("passwordForm").addEventListener("submit", submitPassword);
  element("send").addEventListener("click", askForCode);
  element("back").addEventListener("click", goBack);
  const preferred = navigator.language.toLowerCase();
  applyTexts(!preferred.startsWith("zh") ? "en-us" : /tw|hk|hant/.test(preferred) ? "zh-tw" : "zh-cn");
  setTimeout(() => server || complain("accountError", text("notReady")), PATIENCE);
})();
