# bash completion for quillon-cli; written by quillon-cli --completions bash
_quillon_cli()
{
    local cur prev words cword split
    _init_completion -s || return
    case $prev in
        --chain|--save-chain)
            _filedir 'qlch'
            return
            ;;
        --filter)
            _filedir 'ffxml'
            return
            ;;
        --frame-style)
            COMPREPLY=($(compgen -W 'plain four-digit letter' -- "$cur"))
            return
            ;;
        --format)
            COMPREPLY=($(compgen -W 'JPEG PNG TIFF TGA BMP EXR PFM' -- "$cur"))
            return
            ;;
        --maps)
            COMPREPLY=($(compgen -W 'base alpha diffuse bump normal specstr specexp ao ro metallic' -- "$cur"))
            return
            ;;
        --antialias|--multithread|--dither|--progressive|--normal-flip|--jpeg-full-precision|--png-transparency|--tiff-transparency|--tiff-float|--tga-transparency|--tga-flip)
            COMPREPLY=($(compgen -W 'on off' -- "$cur"))
            return
            ;;
        --png-bitdepth)
            COMPREPLY=($(compgen -W '8 16' -- "$cur"))
            return
            ;;
        --png-compression)
            COMPREPLY=($(compgen -W 'none fast best' -- "$cur"))
            return
            ;;
        --tiff-bitdepth)
            COMPREPLY=($(compgen -W '8 16 24' -- "$cur"))
            return
            ;;
        --tiff-compression)
            COMPREPLY=($(compgen -W 'none lzw deflate' -- "$cur"))
            return
            ;;
        --tga-bitdepth)
            COMPREPLY=($(compgen -W '24 32' -- "$cur"))
            return
            ;;
        --existing)
            COMPREPLY=($(compgen -W 'overwrite skip stop' -- "$cur"))
            return
            ;;
        --input|--report|--from-report|--contact-sheet|--animation)
            _filedir
            return
            ;;
        --wine|--output|--input-dir|--slurm-bundle|--run-part|--collect)
            _filedir -d
            return
            ;;
        --tool|--wine-binary)
            COMPREPLY=($(compgen -c -- "$cur"))
            return
            ;;
        --frames|--width|--height|--prefix|--preset|--seed|--jpeg-quality|--jobs|--slurm-option|--output-index|--fps)
            :
            return
            ;;
    esac
    $split && return
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '--chain --filter --tool --wine --wine-binary --output --mkdir --input --input-dir --frames --width --height --prefix --frame-style --format --preset --maps --log --seed --antialias --multithread --dither --progressive --normal-flip --jpeg-full-precision --png-transparency --tiff-transparency --tiff-float --tga-transparency --tga-flip --jpeg-quality --png-bitdepth --png-compression --tiff-bitdepth --tiff-compression --tga-bitdepth --jobs --quiet --verbose --report --dry-run --json --existing --save-chain --slurm-bundle --slurm-option --run-part --collect --from-report --output-index --contact-sheet --animation --fps -h --help -v -V --version' -- "$cur"))
        return
    fi
    # Words after --filter are more definitions.
    _filedir ffxml
}
complete -F _quillon_cli quillon-cli
