"use strict";

/**
 * Passwords leave the page only encrypted for the server's key, which lies beside it as a DER certificate: RSA with
 * PKCS#1 v1.5 padding, as the server's API expects.
 */
const passwordEncryption = (() => {
  /** The ASN.1 value at `offset`: its content and where the next one begins. */
  function valueAt(bytes, offset) {
    let length = bytes[offset + 1];
    let start = offset + 2;
    if (length > 0x80) {
      const count = length - 0x80;
      length = 0;
      for (let i = 0; i < count; ++i)
        length = length * 256 + bytes[start + i];
      start += count;
    }
    if (!(start + length <= bytes.length))
      throw new Error("not a certificate");
    return { tag: bytes[offset], content: bytes.subarray(start, start + length), next: start + length };
  }

  function parts(bytes) {
    const found = [];
    for (let offset = 0; offset < bytes.length; offset = found[found.length - 1].next)
      found.push(valueAt(bytes, offset));
    return found;
  }

  function numberFrom(bytes) {
    return BigInt("0x" + Array.from(bytes, (byte) => byte.toString(16).padStart(2, "0")).join(""));
  }

  /** The certificate's RSA key. Throws on anything else. */
  function keyOf(certificate) {
    const signed = parts(parts(valueAt(certificate, 0).content)[0].content);
    const version = signed[0].tag === 0xa0 ? 1 : 0;
    const bits = parts(signed[version + 5].content)[1].content;
    const [modulus, exponent] = parts(valueAt(bits.subarray(1), 0).content).map((part) => numberFrom(part.content));
    const size = Math.ceil(modulus.toString(16).length / 2);
    if (size < 64 || exponent < 3n)
      throw new Error("not an RSA key");
    return { modulus, exponent, size };
  }

  function padded(message, size) {
    const block = crypto.getRandomValues(new Uint8Array(size));
    const room = size - message.length - 3;
    if (room < 8)
      throw new Error("too long");
    block[0] = 0;
    block[1] = 2;
    for (let i = 2; i < 2 + room; ++i)
      while (block[i] === 0)
        crypto.getRandomValues(block.subarray(i, i + 1));
    block[2 + room] = 0;
    block.set(message, 3 + room);
    return block;
  }

  function power(base, exponent, modulus) {
    let result = 1n;
    for (let square = base; exponent > 0n; exponent >>= 1n, square = square * square % modulus)
      if (exponent & 1n)
        result = result * square % modulus;
    return result;
  }

  /** Base64 of the ciphertext. */
  function encrypt(text, certificate) {
    const key = keyOf(certificate);
    const message = numberFrom(padded(new TextEncoder().encode(text), key.size));
    const digits = power(message, key.exponent, key.modulus).toString(16).padStart(key.size * 2, "0");
    return btoa(digits.replace(/../g, (pair) => String.fromCharCode(parseInt(pair, 16))));
  }

  /** The certificate beside the page. */
  function readCertificate() {
    return new Promise((resolve, reject) => {
      const request = new XMLHttpRequest(); // fetch() does not read files
      request.open("GET", "public_key.der");
      request.responseType = "arraybuffer";
      request.onload = () => request.response && request.response.byteLength
        ? resolve(new Uint8Array(request.response)) : reject(new Error("no certificate"));
      request.onerror = () => reject(new Error("no certificate"));
      request.send();
    });
  }

  return { encrypt, readCertificate };
})();
