// Runs the Khronos glTF validator over every .gltf file below the folders given, with the buffers beside them.
// Prints each file's issues, and fails when any file has an error or when there is no file at all: a build that made
// no meshes is a failure too. Degenerate triangles count as errors, since the generator leaves none on purpose.
//
//   node validate_gltf.js <folder>...
'use strict';

const fs = require('fs');
const path = require('path');

let validator;
try {
    validator = require('gltf-validator');
} catch (error) {
    console.error(`the glTF validator is missing: run scripts/setup, or npm ci in ${__dirname} (${error.message})`);
    process.exit(1);
}

const severities = ['error', 'warning', 'info', 'hint'];

function gltfFilesBelow(folder) {
    return fs.readdirSync(folder, {withFileTypes: true}).flatMap((entry) => {
        const file = path.join(folder, entry.name);
        if (entry.isDirectory()) return gltfFilesBelow(file);
        return entry.name.endsWith('.gltf') ? [file] : [];
    });
}

async function validate(file) {
    const report = await validator.validateBytes(new Uint8Array(fs.readFileSync(file)), {
        uri: path.basename(file),
        format: 'gltf',
        severityOverrides: {ACCESSOR_INDEX_TRIANGLE_DEGENERATE: 0},
        externalResourceFunction: (uri) =>
            fs.promises.readFile(path.resolve(path.dirname(file), decodeURIComponent(uri)))
                .then((data) => new Uint8Array(data)),
    });
    const issues = report.issues;
    console.log(`${file}: ${issues.numErrors} errors, ${issues.numWarnings} warnings, ${issues.numInfos} infos, ` +
                `${issues.numHints} hints`);
    for (const message of issues.messages) {
        const where = message.pointer || '/';
        console.log(`  ${severities[message.severity]} ${message.code} at ${where}: ${message.message}`);
    }
    return issues.numErrors;
}

async function main(folders) {
    if (folders.length === 0) {
        console.error('usage: node validate_gltf.js <folder>...');
        return 2;
    }
    const files = folders.flatMap(gltfFilesBelow).sort();
    if (files.length === 0) {
        console.error(`no .gltf file below ${folders.join(', ')}`);
        return 1;
    }
    let errors = 0;
    for (const file of files) errors += await validate(file);
    console.log(`${files.length} files, ${errors} errors`);
    return errors === 0 ? 0 : 1;
}

main(process.argv.slice(2)).then((code) => process.exit(code), (error) => {
    console.error(error);
    process.exit(1);
});
