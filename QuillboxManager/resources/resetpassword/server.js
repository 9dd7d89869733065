"use strict";

/** What went wrong with a call: the server's code, or the name of a text. */
class CallError extends Error {
  constructor(reason, value = "") {
    super(String(reason));
    this.reason = reason;
    this.value = value;
  }
}

/** The calls of the server; `base` is its address with port. Replies are bounded and nothing in them is trusted. */
class ResetServer {
  static LONGEST_REPLY = 64 * 1024;
  static TIMEOUT = 30 * 1000;

  constructor(base) {
    this.base = base;
  }

  /** { ways: [{ name, destination }], strong } */
  async waysOf(account) {
    const reply = await this.call("getvcodesendway", { account });
    const given = reply.ways && typeof reply.ways === "object" ? reply.ways : {};
    const ways = ["sms", "email"].filter((name) => typeof given[name] === "string")
      .map((name) => ({ name, destination: given[name].slice(0, 64) }));
    if (!ways.length)
      throw new CallError("noWay");
    return { ways, strong: reply.enable_strong_pwd === true };
  }

  /** { destination, interval in seconds, duplicate } */
  async sendCode(account, way) {
    const reply = await this.call("sendvcode", { account, way });
    const seconds = Number(reply.sendinterval);
    return {
      destination: typeof reply.authway === "string" ? reply.authway.slice(0, 64) : "",
      interval: Number.isFinite(seconds) ? Math.min(Math.max(Math.ceil(seconds), 0), 3600) : 0,
      duplicate: reply.isduplicatesended === true,
    };
  }

  resetPassword(account, code, encryptedPassword) {
    return this.call("resetpassword", { account, vcode: code, newpwd: encryptedPassword });
  }

  async call(method, body) {
    const abort = new AbortController();
    const timer = setTimeout(() => abort.abort(), ResetServer.TIMEOUT);
    try {
      const response = await fetch(`${this.base}/api/v1/auth1?method=${method}`,
        { method: "POST", body: JSON.stringify(body), credentials: "omit", redirect: "error", signal: abort.signal });
      return this.read(response, await this.textOf(response, abort));
    } catch (error) {
      throw error instanceof CallError ? error : new CallError("network");
    } finally {
      clearTimeout(timer);
    }
  }

  async textOf(response, abort) {
    const reader = response.body.getReader();
    const decoder = new TextDecoder();
    let text = "";
    for (let part = await reader.read(); !part.done; part = await reader.read()) {
      text += decoder.decode(part.value, { stream: true });
      if (text.length > ResetServer.LONGEST_REPLY) {
        abort.abort();
        throw new CallError("misunderstood");
      }
    }
    return text;
  }

  read(response, text) {
    let reply = null;
    try {
      reply = JSON.parse(text);
    } catch {
      throw new CallError("misunderstood");
    }
    if (!reply || typeof reply !== "object" || Array.isArray(reply))
      throw new CallError("misunderstood");
    if (Number.isInteger(reply.errcode)) {
      const minutes = Number(reply.detail && reply.detail.remainlockTime);
      throw new CallError(reply.errcode, Number.isFinite(minutes) && minutes > 0 ? Math.ceil(minutes) : "");
    }
    if (!response.ok)
      throw new CallError("misunderstood");
    return reply;
  }
}
