// SPDX-License-Identifier: Apache-2.0

// Display words, plain text, addresses and HTML of protocol values, from the bytes of messages.
// Strings are bytes: here, JavaScript strings of one character a byte ('latin1').

const WORDS = {
  'Resource.Scheme': 'data,file,ftp,http,https,irc,mailto'.split(','),
  'Reference.RefType': (
    'array,AXI,channel,condition,constraint,conversion,core,data mover,data type,DDR bank,file,' +
    'function,hierarchy,interface,kernel,loop,memory,operation,operator,other,PCIE,port,pragma,' +
    'predicate,READ OP,region,system,variable,WRITE OP'
  ).split(','),
  'Violation.Severity': 'fatal,error,critical warning,warning,advisory,<undefined>'.split(','),
};

// The fields of each message by number: name and type. A type that is a message has an entry here,
// one that is an enumeration has words; a list has [] after its type.
const FIELDS = {
  Resource:
    'scheme Resource.Scheme,host string,port int32,path string,query string,fragment string,' +
    'mediaType string,encoding string,data string',
  Link: 'linkText string,url Resource,docgenFilename string',
  Links: 'uri Link[]',
  Scalar: 'intVal int64,doubleVal double,stringVal string,address string,units string',
  Reference: 'type Reference.RefType,name string,id int32,uuid string,value Scalar,url Resource',
  RefList: 'ref Reference[]',
  Arg: 'ref Reference,refs RefList,uri Link,uris Links,scalar Scalar,stringVal string',
};

const readVarint = (bytes, start) => {
  let value = 0n;
  for (let at = start; at < start + 10 && at < bytes.length; ++at) {
    value |= BigInt(bytes[at] & 127) << BigInt(7 * (at - start));
    if (bytes[at] < 128) return [BigInt.asUintN(64, value), at + 1];
  }
  throw new Error('malformed message');
};

// The value at a position, as it is on the wire, and the position after it.
const readValue = (bytes, wireType, start) => {
  if (wireType === 0) return readVarint(bytes, start);
  const [length, at] = wireType === 2 ? readVarint(bytes, start) : [{ 1: 8, 5: 4 }[wireType], start];
  const end = at + Number(length);
  if (!(end <= bytes.length)) throw new Error('malformed message');
  return [bytes.subarray(at, end), end];
};

const WIRE_TYPES = { int32: 0, int64: 0, double: 1 };

const decode = (type, value, previous) => {
  if (type === 'string') return Buffer.from(value).toString('latin1');
  if (type === 'int32' || type === 'int64') return BigInt.asIntN(type === 'int32' ? 32 : 64, value);
  if (type === 'double') return new DataView(value.buffer, value.byteOffset, 8);
  return parse(type, value, previous);
};

// A message is an object with a property for each field that is set. Fields that the type does not
// have are skipped, and so are numbers that an enumeration does not list.
export const parse = (type, bytes, message = {}) => {
  for (let at = 0, tag, value; at < bytes.length; ) {
    [tag, at] = readVarint(bytes, at);
    const wireType = Number(tag & 7n);
    [value, at] = readValue(bytes, wireType, at);
    const [name, fieldType] = FIELDS[type].split(',')[Number(tag >> 3n) - 1]?.split(' ') ?? [];
    const words = WORDS[fieldType];
    if (!name || wireType !== (words ? 0 : WIRE_TYPES[fieldType] ?? 2)) continue;
    if (words) {
      const number = Number(BigInt.asIntN(32, value));
      if (words[number] !== undefined) message[name] = number;
    } else if (fieldType.endsWith('[]')) {
      (message[name] ??= []).push(parse(fieldType.slice(0, -2), value));
    } else {
      message[name] = decode(fieldType, value, message[name]);
    }
  }
  return message;
};

// As printf's "%f": all digits, and exact ties are rounded to an even last digit.
const double = (view) => {
  const bits = view.getBigUint64(0, true);
  const sign = bits >> 63n ? '-' : '';
  const exponent = (bits >> 52n) & 2047n;
  const fraction = bits & ((1n << 52n) - 1n);
  if (exponent === 2047n) return sign + (fraction ? 'nan' : 'inf');
  const scaled = (exponent ? fraction | (1n << 52n) : fraction) * 1000000n;
  const shift = (exponent || 1n) - 1075n; // the number is scaled * 2^shift millionths
  let millionths = shift > 0n ? scaled << shift : scaled >> -shift;
  const twice = shift < 0n ? (scaled - (millionths << -shift)) << 1n : 0n; // what was cut off
  const one = shift < 0n ? 1n << -shift : 1n;
  if (twice > one || (twice === one && millionths & 1n)) millionths += 1n;
  const digits = String(millionths).padStart(7, '0');
  return `${sign}${digits.slice(0, -6)}.${digits.slice(-6)}`;
};

// The first set value of a scalar, in an order that differs between text and HTML.
const firstValue = (scalar, ...order) => {
  const name = order.find((candidate) => candidate in scalar);
  return name === 'doubleVal' ? double(scalar.doubleVal) : String(scalar[name] ?? '');
};

const piece = (message, name, before) => (name in message ? before + message[name] : '');

const href = (url) => {
  if (!('scheme' in url)) return '';
  if (url.scheme === 0) {
    const separator = 'mediaType' in url ? ';' : '';
    return `data:${url.mediaType ?? ''}${piece(url, 'encoding', separator)}${piece(url, 'data', ',')}`;
  }
  const path = url.path && !url.path.startsWith('/') ? `/${url.path}` : (url.path ?? '');
  const end = piece(url, 'query', '?') + piece(url, 'fragment', '#');
  const prefix = { 1: 'file://', 3: 'http://', 4: 'https://' }[url.scheme] ?? '';
  return prefix + (url.host ?? '') + piece(url, 'port', ':') + path + end;
};

const anchor = (url, text) => {
  if (!('scheme' in url)) return '';
  if (url.scheme === 0 && url.mediaType === 'text/html') return url.data ?? '';
  return `<a href="${href(url)}">${text}</a>`;
};

const word = (type, number) => WORDS[type][number] ?? (type === 'Resource.Scheme' ? 'unknown' : '<undefined>');

const referenceText = (ref) => {
  const suffix = 'id' in ref ? ` #${ref.id}` : piece(ref, 'uuid', ' ');
  return ref.name ?? word('Reference.RefType', ref.type ?? 0) + suffix;
};

const html = {
  Resource: anchor,
  Link: ({ url, linkText }) =>
    url ? anchor(url, linkText ?? url.mediaType ?? 'link') : (linkText ?? '<empty>'),
  Reference: (ref) => (ref.url ? anchor(ref.url, referenceText(ref)) : referenceText(ref)),
  Arg: ({ ref, uri, refs, uris, stringVal, scalar }) => {
    if (ref) return html.Reference(ref);
    if (uri) return html.Link(uri);
    if (refs) return (refs.ref ?? []).map(html.Reference).join();
    if (uris) return (uris.uri ?? []).map(html.Link).join();
    return stringVal ?? firstValue(scalar ?? {}, 'intVal', 'doubleVal', 'stringVal', 'address');
  },
};

const scalarText = (scalar) =>
  firstValue(scalar, 'stringVal', 'intVal', 'doubleVal', 'address') +
  ('address' in scalar ? '' : piece(scalar, 'units', ' '));

// By function and type. That of a Resource's HTML also takes the text of the anchor; word takes the
// name of an enumeration and a number.
const toString = { Scalar: scalarText, Reference: referenceText };
export const converter = { toString, href: { Resource: href }, toHtml: html, word };
