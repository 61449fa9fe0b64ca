// Validates glTF files: node validate.js FILE... Prints every error and warning as
//     FILE: CODE at /json/pointer: message
// and exits with 1 when there is one, with 2 when a file could not be read.
"use strict";

const fs = require("fs");
const path = require("path");
const validator = require("gltf-validator");

const severities = ["error", "warning"]; // what else it says are remarks

async function problemsOf(file) {
  const folder = path.dirname(file);
  const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
    uri: path.basename(file),
    maxIssues: 0, // all of them
    externalResourceFunction: async (uri) =>
        new Uint8Array(fs.readFileSync(path.join(folder, decodeURIComponent(uri)))),
  });
  return report.issues.messages.filter(
    ({ code, severity, pointer }) =>
      severity < severities.length &&
      // An image that a scene names may be on another machine.
      !(code === "IO_ERROR" && /^\/images\/\d+/.test(pointer)));
}

async function main(files) {
  let problems = 0;
  for (const file of files) {
    for (const { code, severity, pointer, message } of await problemsOf(file)) {
      console.log(`${file}: ${severities[severity]} ${code} at ${pointer || "/"}: ${message}`);
      ++problems;
    }
  }
  console.log(`${files.length} files validated, ${problems} errors and warnings`);
  process.exitCode = problems > 0 ? 1 : 0;
}

main(process.argv.slice(2)).catch((error) => {
  console.error(error && error.stack ? error.stack : error);
  process.exitCode = 2;
});
