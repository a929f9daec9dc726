// For scripts/lint-pages: what the pages are written in, and what is a mistake in them.
const browser = [
    "addEventListener", "cancelAnimationFrame", "clearInterval", "clearTimeout", "console", "devicePixelRatio",
    "document", "fetch", "getComputedStyle", "Image", "innerHeight", "innerWidth", "performance",
    "requestAnimationFrame", "ResizeObserver", "screenX", "screenY", "setInterval", "setTimeout", "window"
];

export default [
    {
        languageOptions: {
            ecmaVersion: 2019,
            sourceType: "script",
            globals: Object.fromEntries(browser.map((name) => [name, "readonly"]))
        },
        rules: {
            "constructor-super": "error",
            "eqeqeq": "error",
            "for-direction": "error",
            "getter-return": "error",
            "no-class-assign": "error",
            "no-compare-neg-zero": "error",
            "no-cond-assign": "error",
            "no-const-assign": "error",
            "no-debugger": "error",
            "no-dupe-args": "error",
            "no-dupe-else-if": "error",
            "no-dupe-keys": "error",
            "no-duplicate-case": "error",
            "no-empty": "error",
            "no-eval": "error",
            "no-fallthrough": "error",
            "no-func-assign": "error",
            "no-implied-eval": "error",
            "no-loss-of-precision": "error",
            "no-redeclare": "error",
            "no-self-assign": "error",
            "no-shadow-restricted-names": "error",
            "no-sparse-arrays": "error",
            "no-unreachable": "error",
            "no-unused-vars": ["error", { args: "after-used", vars: "local" }],
            "no-use-before-define": ["error", { functions: false, classes: false, variables: false }],
            "no-var": "error",
            "prefer-const": "error",
            "use-isnan": "error",
            "valid-typeof": "error"
        }
    }
];
